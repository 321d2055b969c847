// Specialised READ: the keyword and the commas behind it hold a place each.
//
// A READ that fails part of the way is executed again from its start, with the position in the DATA that it
// found. That cannot be noticed while reading a place does not change where the next one is, so only a single
// place may be an element.
#include <string_view>

#include "fast/links.h"
#include "fast/number_types.h"
#include "fast/places.h"
#include "fast/sides.h"
#include "fast/statement.h"
#include "fast/text_sides.h"
#include "values/data_items.h"
#include "values/text_number.h"

namespace korvane::fast {
namespace {

bool store_item(std::uint8_t* place, Type type, std::string_view item) {
    if (!is_integer(type)) {
        double number;
        return text_to_double(item, number) == NumberReading::number && store_number(type, place, number);
    }
    Value number;
    if (text_to_number(item, number) != NumberReading::number) return false;
    const Whole whole = is_integer(number.type) ? Whole{number.integer, 0} : round_whole(number.real);
    return whole.failed == 0 && store_number(type, place, whole.value);
}

bool read_item(const PlaceRecord& host) {
    std::uint8_t* place = place_address(host);
    std::string_view item;
    if (place == nullptr || !next_data_item(item)) return false;
    if (host.type != Type::STRING) return store_item(place, host.type, item);
    return store_text(place, Value::of_string(item));
}

}  // namespace

bool read_items(const Token* host) {
    const DataPosition start = data_position;
    for (; host != nullptr; host = as<PlaceRecord>(host).next_place) {
        if (read_item(as<PlaceRecord>(host))) continue;
        data_position = start;
        return false;
    }
    return true;
}

namespace {

std::uint64_t read_places(Current at, std::uint64_t budget) {
    std::uint8_t* string_top = arenas.FREETOP;
    if (!read_items(at)) return fall_back(at, budget, string_top);
    KORVANE_JUMP return proceed(as<PlaceRecord>(at).after, budget);
}

}  // namespace

[[gnu::cold]] bool specialise_read(Token* at) {
    for (Token* host = at;;) {
        Place place;
        if (!read_place(host + 1, place)) return false;
        const bool is_last = place.end->kind != ',';
        const bool is_only = is_last && host == at;
        if (place.is_element && !is_only) return false;
        hold_place(host, place);
        as<PlaceRecord>(host).next_place = is_last ? nullptr : place.end;
        if (is_last) {
            as<PlaceRecord>(at).after = link_behind(at, place.end);
            at->execute = guarded<read_places>;
            return true;
        }
        host = place.end;
    }
}

}  // namespace korvane::fast
