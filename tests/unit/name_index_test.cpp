// The index of names, against a search of the table from its start.
#include "values/name_index.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "random_bits.h"

namespace korvane {
namespace {

constexpr std::uint32_t capacity = 64;
using Name = std::array<char, name_capacity>;

Name padded(const std::string& text) {
    Name name{};
    std::memcpy(name.data(), text.data(), text.size());
    return name;
}

// The entries of a name by the index, in its order.
std::vector<std::size_t> found(const NameIndex<capacity>& index, const std::vector<Name>& table,
                               const Name& name) {
    std::vector<std::size_t> entries;
    for (std::uint16_t i = index.first(name.data()); i != index.none; i = index.next(i)) {
        EXPECT_LT(i, table.size());
        if (table[i] == name) entries.push_back(i);
    }
    return entries;
}

// Later entries come first.
std::vector<std::size_t> searched(const std::vector<Name>& table, const Name& name) {
    std::vector<std::size_t> entries;
    for (std::size_t i = table.size(); i-- > 0;)
        if (table[i] == name) entries.push_back(i);
    return entries;
}

TEST(NameIndex, FindsWhatIsInTheTableHoweverItCameThere) {
    test::RandomBits random(1);
    for (int game = 0; game < 30; ++game) {
        const auto index = std::make_unique<NameIndex<capacity>>();
        index->clear();
        std::vector<Name> table;
        // Few names, so that some stand in the table more than once, and chains of one hash are long.
        const int names = 2 + random.below(100);
        for (int step = 0; step < 2000; ++step) {
            const bool adds = table.empty() || (table.size() < capacity && random.below(2) == 0);
            if (adds) {
                table.push_back(padded("N" + std::to_string(random.below(names))));
                index->add(table.back().data(), static_cast<std::uint16_t>(table.size() - 1));
            } else {
                const int last = static_cast<int>(table.size()) - 1;
                const int entry = random.below(3) == 0 ? last : random.below(last + 1);
                const Name name = table[static_cast<std::size_t>(entry)];
                index->remove(name.data(), static_cast<std::uint16_t>(entry),
                              static_cast<std::uint32_t>(table.size()));
                table.erase(table.begin() + entry);
            }
            const Name wanted = padded("N" + std::to_string(random.below(names)));
            ASSERT_EQ(found(*index, table, wanted), searched(table, wanted)) << game << " " << step;
        }
        for (int name = 0; name < names; ++name) {
            const Name wanted = padded("N" + std::to_string(name));
            ASSERT_EQ(found(*index, table, wanted), searched(table, wanted));
        }
    }
}

}  // namespace
}  // namespace korvane
