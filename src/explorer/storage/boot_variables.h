#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

#include "platform/firmware.h"

namespace korvane {

// The contents of one of the firmware's global variables.
class GlobalVariable {
  public:
    explicit GlobalVariable(const char16_t* name);

    explicit operator bool() const { return valid_; }  // false: not there, unreadable or absurdly large
    std::span<const std::uint8_t> bytes() const;

    // The contents as one 16-bit number; nothing when they are no such number.
    std::optional<std::uint16_t> number() const;

  private:
    std::optional<PoolBuffer> buffer_;
    std::uint64_t size_ = 0;
    bool valid_ = false;
};

// The name of a `Boot####` variable: four upper-case hexadecimal digits follow "Boot".
class BootVariableName {
  public:
    explicit BootVariableName(std::uint16_t number);
    const char16_t* text() const { return text_.data(); }

  private:
    std::array<char16_t, 9> text_;
};

// The `BootOrder` variable: the numbers of the boot entries in the order in which the firmware tries them.
class BootOrder {
  public:
    BootOrder();

    std::size_t count() const { return variable_.bytes().size() / sizeof(std::uint16_t); }
    std::uint16_t number(std::size_t index) const;
    bool contains(std::uint16_t number) const;

  private:
    GlobalVariable variable_;
};

// Walks the numbers of the boot entries that may exist: those of `BootOrder` in its order, then 0000 to 00FF
// as far as they are not in it. Firmware that numbers entries higher lists them in `BootOrder` in practice.
class BootEntryWalk {
  public:
    explicit BootEntryWalk(const BootOrder& order) : order_(order) {}

    // Goes to the next number; false when there is none left.
    bool next();

    std::uint16_t number() const { return number_; }
    bool in_order() const { return in_order_; }

  private:
    const BootOrder& order_;
    std::size_t ordered_ = 0;      // entries of the order so far
    std::uint32_t unordered_ = 0;  // numbers tried since
    std::uint16_t number_ = 0;
    bool in_order_ = false;
};

}  // namespace korvane
