// The volumes' files, in memory: what the page puts there, and what it is told of.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host_clock.h"

namespace korvane::web {

// A file or a folder.
struct Node {
    std::string name;
    Node* parent = nullptr;
    bool is_folder = false;
    bool is_changed = false;  // since the page was told of it
    int users = 0;            // descriptors
    host::HostTime modified{};
    std::uint64_t creation = 0;  // its number among those made here; 0 for what the page put
    std::vector<std::uint8_t> bytes;
    std::vector<std::unique_ptr<Node>> entries;
};

// The folder that all volumes and disks are in.
Node& all_files();

// The entry with exactly this name, or null.
Node* entry_of(const Node& folder, std::string_view name);

// What a path with slashes leads to from `all_files()`, or null.
Node* find_node(std::string_view path);

// The same, whatever case its letters have, made where it is not there, with the folders that lead there.
// Null when something of the other kind is in the way.
Node* make_node(std::string_view path, bool is_folder);

// Whether FAT could hold all the names of a path.
bool is_legal_path(std::string_view path);

// Tells the page of everything that has changed and that it has not been told of.
void tell_changed(Node& folder);

// Takes an entry out of its folder. Descriptors of it stay good.
void drop(Node& node);

}  // namespace korvane::web
