// What may be done with the pages that the firmware hands out: guard pages behind them are nobody's, the
// others have the attributes that the interpreter gives them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

namespace korvane::fuzz {

class PageAccess {
  public:
    // Nobody touches this page from now on.
    void guard(std::uint64_t page);
    bool has_guard_in(std::uint64_t address, std::uint64_t bytes) const;
    const std::vector<std::uint64_t>& guards() const { return guards_; }

    // Whether some page may be executed.
    bool has_code() const;
    // False when the pages differ; the attributes are those of the first one.
    bool read(std::uint64_t address, std::uint64_t bytes, std::uint64_t& attributes) const;
    void change(std::uint64_t address, std::uint64_t bytes, std::uint64_t set, std::uint64_t cleared);

    // All pages can be written from before_saving() to after_saving(), which keeps what is so far.
    void before_saving();
    void after_saving();
    // The same for going back to that, but that guards of then are not touched.
    void before_putting_back();
    void after_putting_back();

  private:
    std::uint64_t attributes_of(std::uint64_t page) const;
    void protect(std::uint64_t begin, std::uint64_t end) const;
    void protect_all() const { protect(0, ~std::uint64_t{0}); }
    void unprotect() const;

    std::vector<std::uint64_t> guards_;
    std::size_t saved_guards_ = 0;
    std::map<std::uint64_t, std::uint64_t> protected_;  // attributes of pages that somebody has changed
    std::map<std::uint64_t, std::uint64_t> saved_protected_;
};

}  // namespace korvane::fuzz
