#include "memory_folder.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "fat_names.h"
#include "folder.h"
#include "give_up.h"
#include "imports.h"

namespace korvane::web {

namespace {

// Entries that are in no folder any more and still open.
std::vector<std::unique_ptr<Node>> orphans;

std::vector<Node*> open_nodes;  // by descriptor number; null for free numbers

std::uint64_t creations = 0;

Node& add_entry(Node& folder, std::string_view name, bool is_folder) {
    Node& added = *folder.entries.emplace_back(std::make_unique<Node>());
    added.name = name;
    added.parent = &folder;
    added.is_folder = is_folder;
    added.modified = host::host_time_now();
    return added;
}

// By a name in whatever case, but for choice in the very same.
Node* entry_like(const Node& folder, std::string_view name) {
    if (Node* entry = entry_of(folder, name)) return entry;
    for (const auto& entry : folder.entries)
        if (host::same_name(entry->name, name)) return entry.get();
    return nullptr;
}

std::unique_ptr<Node> take_out(Node& node) {
    auto& entries = node.parent->entries;
    const auto place =
        std::find_if(entries.begin(), entries.end(), [&](const auto& one) { return one.get() == &node; });
    std::unique_ptr<Node> taken = std::move(*place);
    entries.erase(place);
    taken->parent = nullptr;
    return taken;
}

// Splits the first name off a path.
std::string_view take_name(std::string_view& path) {
    while (path.starts_with('/'))
        path.remove_prefix(1);
    const std::string_view name = path.substr(0, path.find('/'));
    path.remove_prefix(name.size());
    while (path.starts_with('/'))
        path.remove_prefix(1);
    return name;
}

// Nothing for what is in no folder any more.
std::string path_of(const Node& node) {
    std::string path;
    for (const Node* at = &node; at != &all_files(); at = at->parent) {
        if (at->parent == nullptr) return {};
        path.insert(0, "/" + at->name);
    }
    return path;
}

double milliseconds_of(const host::HostTime& time) {
    return static_cast<double>(time.seconds) * 1000.0 + time.nanoseconds / 1'000'000;
}

void tell(Node& node) {
    const std::string path = path_of(node);
    if (path.empty()) return;
    node.is_changed = false;
    const double modified = milliseconds_of(node.modified);
    if (node.is_folder)
        import_tell_folder(path.data(), path.size(), modified);
    else
        import_tell_file(path.data(), path.size(), node.bytes.data(), node.bytes.size(), modified);
    for (const auto& entry : node.entries)
        tell(*entry);
}

void tell_gone(const Node& node) {
    const std::string path = path_of(node);
    if (!path.empty()) import_tell_gone(path.data(), path.size());
}

Node* node_of(int number) {
    return number >= 0 ? open_nodes[static_cast<std::size_t>(number)] : nullptr;
}

host::Descriptor open_node(Node* node) {
    if (node == nullptr || node->is_folder) return host::Descriptor();
    ++node->users;
    auto place = std::find(open_nodes.begin(), open_nodes.end(), nullptr);
    if (place == open_nodes.end()) place = open_nodes.insert(place, nullptr);
    *place = node;
    return host::Descriptor(static_cast<int>(place - open_nodes.begin()));
}

void close_node(int number) {
    Node* node = node_of(number);
    if (node == nullptr) return;
    open_nodes[static_cast<std::size_t>(number)] = nullptr;
    if (--node->users == 0) std::erase_if(orphans, [=](const auto& one) { return one.get() == node; });
}

host::FileStatus status_of(const Node& node) {
    return {node.is_folder, false, node.bytes.size(), node.modified, node.modified};
}

}  // namespace

Node& all_files() {
    static Node root;
    root.is_folder = true;
    return root;
}

Node* entry_of(const Node& folder, std::string_view name) {
    for (const auto& entry : folder.entries)
        if (entry->name == name) return entry.get();
    return nullptr;
}

Node* find_node(std::string_view path) {
    Node* node = &all_files();
    for (std::string_view name = take_name(path); node != nullptr && !name.empty(); name = take_name(path))
        node = entry_of(*node, name);
    return node;
}

Node* make_node(std::string_view path, bool is_folder) {
    Node* node = &all_files();
    for (std::string_view name = take_name(path); !name.empty(); name = take_name(path)) {
        if (!node->is_folder) return nullptr;
        Node* entry = entry_like(*node, name);
        node = entry != nullptr ? entry : &add_entry(*node, name, is_folder || !path.empty());
    }
    return node->is_folder == is_folder ? node : nullptr;
}

bool is_legal_path(std::string_view path) {
    for (std::string_view name = take_name(path); !name.empty(); name = take_name(path))
        if (!host::is_legal_name(name)) return false;
    return true;
}

void tell_changed(Node& folder) {
    for (const auto& entry : folder.entries) {
        if (entry->is_changed) tell(*entry);
        tell_changed(*entry);
    }
}

void drop(Node& node) {
    std::unique_ptr<Node> taken = take_out(node);
    if (taken->users != 0) orphans.push_back(std::move(taken));
}

}  // namespace korvane::web

namespace korvane::host {

using namespace korvane::web;

Descriptor::~Descriptor() {
    if (number_ >= 0) close_node(number_);
}

std::optional<FileStatus> Descriptor::status() const {
    const Node* node = node_of(number_);
    if (node == nullptr) return std::nullopt;
    return status_of(*node);
}

std::optional<std::uint64_t> Descriptor::read(void* buffer, std::uint64_t size, std::uint64_t offset) const {
    const Node* node = node_of(number_);
    if (node == nullptr) return std::nullopt;
    if (offset >= node->bytes.size()) return 0;
    const std::uint64_t count = std::min<std::uint64_t>(size, node->bytes.size() - offset);
    std::memcpy(buffer, node->bytes.data() + offset, count);
    return count;
}

std::optional<std::uint64_t> Descriptor::write(const void* buffer, std::uint64_t size,
                                               std::uint64_t offset) const {
    Node* node = node_of(number_);
    if (node == nullptr) return std::nullopt;
    if (size != 0 && offset + size > node->bytes.size() && !resize(offset + size)) return std::nullopt;
    std::memcpy(node->bytes.data() + offset, buffer, size);
    node->is_changed = true;
    node->modified = host_time_now();
    return size;
}

bool Descriptor::resize(std::uint64_t size) const {
    // What a volume in memory can hold at all.
    constexpr std::uint64_t largest_file = 64 * 1024 * 1024;
    Node* node = node_of(number_);
    if (node == nullptr || size > largest_file) return false;
    // Files that grow bit by bit are not copied each time.
    if (size > node->bytes.capacity())
        node->bytes.reserve(std::max(size, 2 * std::uint64_t{node->bytes.size()}));
    node->bytes.resize(size);
    node->is_changed = true;
    node->modified = host_time_now();
    return true;
}

Descriptor open_host_file(const std::string& name, bool) {
    return open_node(find_node(name));
}

Descriptor make_nameless_file() {
    return open_node(orphans.emplace_back(std::make_unique<Node>()).get());
}

struct Folder::Sandbox {
    Node* root;

    Node* find(const FolderPath& path) const {
        Node* node = root;
        for (const std::string& name : path)
            if (node != nullptr) node = entry_of(*node, name);
        return node;
    }
    Node* parent_of(const FolderPath& path) const {
        if (path.empty()) return nullptr;
        Node* parent = find({path.begin(), path.end() - 1});
        return parent != nullptr && parent->is_folder ? parent : nullptr;
    }
    // Null when there is something already, or no folder for it.
    Node* create(const FolderPath& path, bool is_folder) const {
        Node* parent = parent_of(path);
        if (parent == nullptr || entry_of(*parent, path.back()) != nullptr) return nullptr;
        Node& made = add_entry(*parent, path.back(), is_folder);
        made.creation = ++creations;
        made.is_changed = true;
        return &made;
    }
};

Folder::Folder(const std::string& folder) : sandbox_(std::make_unique<Sandbox>()) {
    sandbox_->root = make_node(folder, true);
    if (sandbox_->root == nullptr) give_up("cannot open the folder " + folder);
}

Folder::~Folder() = default;
Folder::Folder(Folder&& other) noexcept = default;
Folder& Folder::operator=(Folder&& other) noexcept = default;

std::optional<FileStatus> Folder::status(const FolderPath& path) const {
    const Node* node = sandbox_->find(path);
    if (node == nullptr) return std::nullopt;
    return status_of(*node);
}

std::vector<std::string> Folder::list(const FolderPath& directory) const {
    std::vector<std::string> names;
    const Node* folder = sandbox_->find(directory);
    if (folder == nullptr) return names;
    std::vector<const Node*> entries;
    for (const auto& entry : folder->entries)
        entries.push_back(entry.get());
    std::sort(entries.begin(), entries.end(), [](const Node* left, const Node* right) {
        return left->creation != right->creation ? left->creation < right->creation
                                                 : left->name < right->name;
    });
    for (const Node* entry : entries)
        if (is_legal_name(entry->name)) names.push_back(entry->name);
    return names;
}

std::optional<std::string> Folder::find(const FolderPath& directory, std::string_view name) const {
    if (!is_legal_name(name)) return std::nullopt;
    for (const std::string& entry : list(directory))
        if (entry == name) return entry;
    for (const std::string& entry : list(directory))
        if (same_name(entry, name)) return entry;
    return std::nullopt;
}

Descriptor Folder::open(const FolderPath& path, bool) const {
    return open_node(sandbox_->find(path));
}

bool Folder::create_file(const FolderPath& path) {
    return sandbox_->create(path, false) != nullptr;
}

bool Folder::create_directory(const FolderPath& path) {
    Node* made = sandbox_->create(path, true);
    if (made != nullptr) tell(*made);
    return made != nullptr;
}

bool Folder::remove(const FolderPath& path) {
    Node* node = sandbox_->find(path);
    if (node == nullptr || node == sandbox_->root || !node->entries.empty()) return false;
    tell_gone(*node);
    drop(*node);
    return true;
}

bool Folder::rename(const FolderPath& from, const FolderPath& to) {
    Node* node = sandbox_->find(from);
    Node* parent = sandbox_->parent_of(to);
    if (node == nullptr || node == sandbox_->root || parent == nullptr) return false;
    // A change of case alone replaces the entry by itself.
    Node* there = entry_of(*parent, to.back());
    if (there != nullptr && there != node) return false;
    for (const Node* above = parent; above != nullptr; above = above->parent)
        if (above == node) return false;
    tell_gone(*node);
    std::unique_ptr<Node> moved = take_out(*node);
    moved->name = to.back();
    moved->parent = parent;
    parent->entries.push_back(std::move(moved));
    tell(*node);
    return true;
}

void Folder::settled(const FolderPath& path) const {
    Node* node = sandbox_->find(path);
    if (node != nullptr && node->is_changed) tell(*node);
}

}  // namespace korvane::host
