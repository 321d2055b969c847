// Names of files as FAT has them, in UTF-8.
#pragma once

#include <string_view>

namespace korvane::host {

// Letters A to Z folded; other bytes exactly.
bool same_name(std::string_view left, std::string_view right);

// True for a name that FAT allows: 1 to 255 characters of UTF-16, none of them a control character, one of
// "*/:<>?\| or of the private or half-width blocks from U+FF80 on; neither "." nor "..".
bool is_legal_name(std::string_view name);

}  // namespace korvane::host
