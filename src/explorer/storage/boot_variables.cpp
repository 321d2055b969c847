#include "explorer/storage/boot_variables.h"

#include "platform/characters.h"
#include "platform/memory.h"

namespace korvane {
namespace {

// Bytes; firmware stores hold far less in all.
constexpr std::uint64_t largest_variable = std::uint64_t{1024} * 1024;
constexpr std::uint32_t tried_numbers = 0x100;

}  // namespace

GlobalVariable::GlobalVariable(const char16_t* name) {
    uefi::RuntimeServices& runtime = *firmware.runtime;
    std::uint64_t size = 0;
    const uefi::Status status =
        runtime.GetVariable(name, &uefi::global_variable_guid, nullptr, &size, nullptr);
    if (status != uefi::buffer_too_small || size == 0 || size > largest_variable) return;
    buffer_.emplace(size);
    if (!*buffer_) return;
    size_ = size;
    const uefi::Status read_status =
        runtime.GetVariable(name, &uefi::global_variable_guid, nullptr, &size_, buffer_->data());
    valid_ = !uefi::is_error(read_status) && size_ <= size;
}

std::span<const std::uint8_t> GlobalVariable::bytes() const {
    if (!valid_) return {};
    return {buffer_->data(), size_};
}

std::optional<std::uint16_t> GlobalVariable::number() const {
    if (bytes().size() != sizeof(std::uint16_t)) return std::nullopt;
    return read_unaligned<std::uint16_t>(bytes().data());
}

BootVariableName::BootVariableName(std::uint16_t number) : text_{u'B', u'o', u'o', u't'} {
    for (unsigned digit = 0; digit < 4; ++digit)
        text_[7 - digit] = static_cast<char16_t>(hex_digit(number >> (4 * digit)));
}

BootOrder::BootOrder() : variable_(u"BootOrder") {}

std::uint16_t BootOrder::number(std::size_t index) const {
    return read_unaligned<std::uint16_t>(variable_.bytes().data() + index * sizeof(std::uint16_t));
}

bool BootOrder::contains(std::uint16_t number) const {
    for (std::size_t i = 0; i < count(); ++i)
        if (this->number(i) == number) return true;
    return false;
}

bool BootEntryWalk::next() {
    in_order_ = ordered_ < order_.count();
    if (in_order_) {
        number_ = order_.number(ordered_++);
        return true;
    }
    while (unordered_ < tried_numbers) {
        number_ = static_cast<std::uint16_t>(unordered_++);
        if (!order_.contains(number_)) return true;
    }
    return false;
}

}  // namespace korvane
