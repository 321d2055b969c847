#include "files/firmware_name.h"

namespace korvane {

namespace {

char16_t to_firmware_unit(char byte) {
    // Names outside ASCII are widened with their sign, which no file system gives a meaning: deliberate.
    return byte == '/' ? u'\\'
                       : static_cast<char16_t>(static_cast<std::int16_t>(static_cast<signed char>(byte)));
}

}  // namespace

FirmwareName::FirmwareName(std::string_view name) : text{}, length(0) {
    for (const char byte : up_to_zero(name).substr(0, max_length))
        text[length++] = to_firmware_unit(byte);
}

}  // namespace korvane
