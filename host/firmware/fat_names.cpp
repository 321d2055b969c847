#include "fat_names.h"

#include <algorithm>

#include "platform/characters.h"
#include "unicode.h"

namespace korvane::host {

bool same_name(std::string_view left, std::string_view right) {
    return std::equal(
        left.begin(), left.end(), right.begin(), right.end(),
        [](char a, char b) { return fold_to_upper(a) == fold_to_upper(b); });
}

bool is_legal_name(std::string_view name) {
    constexpr std::u16string_view forbidden = u"\"*/:<>?\\|";
    const auto text = to_utf16(name);
    if (!text || text->empty() || text->size() > 255 || *text == u"." || *text == u"..") return false;
    return std::all_of(text->begin(), text->end(), [=](char16_t unit) {
        return unit >= 0x20 && unit < 0xFF80 && unit != 0x7F &&
               forbidden.find(unit) == std::u16string_view::npos;
    });
}

}  // namespace korvane::host
