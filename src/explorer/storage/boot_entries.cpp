#include "explorer/storage/boot_entries.h"

#include "explorer/storage/boot_variables.h"
#include "explorer/storage/device_path_text.h"
#include "explorer/storage/load_option.h"

namespace korvane {
namespace {

constexpr std::size_t label_width = 13;
constexpr std::size_t detail_column = 10;
constexpr std::size_t numbers_per_line = 13;  // fit in 79 columns behind the label

void list_number(PagedReport& listing, const char* label, const char16_t* variable) {
    const auto number = GlobalVariable(variable).number();
    if (number) listing.line(LineText().put(label).tab_to(label_width).put_hex(*number, 4));
}

void list_order(PagedReport& listing, const BootOrder& order) {
    for (std::size_t i = 0; i < order.count(); i += numbers_per_line) {
        LineText line;
        line.put(i == 0 ? "BootOrder" : "").tab_to(label_width);
        for (std::size_t j = i; j < order.count() && j < i + numbers_per_line; ++j) {
            line.put_hex(order.number(j), 4);
            if (j + 1 < order.count()) line.put(',');
        }
        if (!listing.line(line)) return;
    }
}

void list_entry(PagedReport& listing, const BootEntryWalk& walk, const LoadOption& option) {
    LineText line;
    line.put("Boot").put_hex(walk.number(), 4).put(option.is_active() ? "  active  " : "  inactive");
    line.put("  \"");
    put_description(line, option);
    line.put('"');
    if (option.is_hidden()) line.put("  hidden");
    if (option.is_application()) line.put("  application");
    if (!walk.in_order()) line.put("  not in BootOrder");
    if (listing.line(line)) list_device_path(listing, option.device_path, detail_column);
}

void list_unreadable(PagedReport& listing, const BootEntryWalk& walk, const GlobalVariable& variable) {
    if (!variable && !walk.in_order()) return;  // a number that was only tried
    LineText line;
    line.put("Boot").put_hex(walk.number(), 4);
    listing.line(line.put(variable ? "  (damaged)" : "  (missing)"));
}

}  // namespace

CommandEnd do_boot(WordReader&) {
    const BootOrder order;
    PagedReport listing;
    list_number(listing, "BootCurrent", u"BootCurrent");
    list_number(listing, "BootNext", u"BootNext");
    list_order(listing, order);
    bool any_readable = false;
    BootEntryWalk walk(order);
    while (!listing.aborted() && walk.next()) {
        const GlobalVariable variable(BootVariableName(walk.number()).text());
        if (const auto option = decode_load_option(variable.bytes())) {
            any_readable = true;
            list_entry(listing, walk, *option);
        } else {
            list_unreadable(listing, walk, variable);
        }
    }
    if (!any_readable) listing.line("UEFI BootOrder/Boot#### variables are unavailable or empty.");
    return CommandEnd::done;
}

std::uint64_t list_boot_descriptions(PagedReport& listing) {
    const BootOrder order;
    std::uint64_t entries = 0;
    BootEntryWalk walk(order);
    while (walk.next()) {
        const GlobalVariable variable(BootVariableName(walk.number()).text());
        const auto option = decode_load_option(variable.bytes());
        if (!option) continue;
        ++entries;
        LineText line;
        line.put("  Boot entry ").put_hex(walk.number(), 4).put(": ");
        put_description(line, *option);
        if (!option->is_active()) line.put("  (inactive)");
        if (!listing.line(line)) break;
    }
    return entries;
}

}  // namespace korvane
