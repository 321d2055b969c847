// Finds the entries of a table by their names, however many there are: for each hash the entries that have
// it, as chains of entry numbers beside the table, whose own layout is fixed.
#pragma once

#include <array>
#include <cstdint>

#include "platform/memory.h"
#include "program/token.h"

namespace korvane {

// Names are zero-padded, so two of them are equal exactly when all their bytes are.
inline bool same_name(const char* left, const char* right) {
    std::uint64_t difference = 0;
    for (int i = 0; i < name_capacity; i += 8)
        difference |= read_unaligned<std::uint64_t>(left + i) ^ read_unaligned<std::uint64_t>(right + i);
    return difference == 0;
}

template <std::uint32_t capacity>
class NameIndex {
  public:
    static constexpr std::uint16_t none = 0xFFFF;

    void clear() { fill_bytes(heads_.data(), 0xFF, sizeof heads_); }

    // What names with the same first and next entries have in common. Names are zero-padded, and most of them
    // have no more than eight characters.
    static std::uint32_t slot(const char* name) {
        std::uint64_t hash = 0;
        for (int i = 0; i < name_capacity; i += 8) {
            const auto characters = read_unaligned<std::uint64_t>(name + i);
            if (characters == 0) break;
            hash = (hash ^ characters) * 0x9E3779B97F4A7C15;
        }
        return static_cast<std::uint32_t>(hash >> 32) & (capacity - 1);
    }

    // The first and the next entry that a name may belong to, or none.
    std::uint16_t first(const char* name) const { return heads_[slot(name)]; }
    std::uint16_t next(std::uint16_t entry) const { return next_[entry]; }

    // Entries are added in front of those with the same hash.
    void add(const char* name, std::uint16_t entry) {
        std::uint16_t& head = heads_[slot(name)];
        next_[entry] = head;
        head = entry;
    }

    // Takes an entry out of a table of `count`; those behind it, which are hardly ever any where an array
    // comes and goes, get the number before their own.
    void remove(const char* name, std::uint16_t entry, std::uint32_t count) {
        *link_to(name, entry) = next_[entry];
        if (entry + 1U == count) return;
        move_bytes(next_.data() + entry, next_.data() + entry + 1, (capacity - 1 - entry) * sizeof next_[0]);
        move_down(heads_, entry);
        move_down(next_, entry);
    }

  private:
    static_assert((capacity & (capacity - 1)) == 0 && capacity < none);

    using Links = std::array<std::uint16_t, capacity>;

    // All of them, in use or not: that takes the processor less time than to find out.
    static void move_down(Links& links, std::uint16_t removed) {
        for (std::uint16_t& link : links)
            link = static_cast<std::uint16_t>(link - (link > removed && link != none ? 1 : 0));
    }

    std::uint16_t* link_to(const char* name, std::uint16_t entry) {
        std::uint16_t* link = &heads_[slot(name)];
        while (*link != entry)
            link = &next_[*link];
        return link;
    }

    Links heads_;
    Links next_;
};

}  // namespace korvane
