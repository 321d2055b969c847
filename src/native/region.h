// The statements that are made into one piece of machine code: those that control may reach from one of them
// without leaving what there is code for.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

#include "native/assembler.h"
#include "numbers/value.h"
#include "program/token.h"

namespace korvane::native {

// A statement that the code consists of or leads to.
struct Place {
    Token* at;
    Token* opener;       // of an assignment that is a whole THEN part: its IF, which has code
    Token* loop;         // of a NEXT: its FOR, where that is known
    std::uint32_t key;   // of a NEXT: what it leaves in its loop's entry, once it has got one
    bool has_bounds;     // of a FOR: its bounds have code
    bool is_seen;        // looked at
    bool is_native;      // has code; otherwise control leaves the code here
    bool may_become;     // not native, but it could be later
    bool takes;          // string space or random numbers, which are given back when it fails
    bool calls_users;    // user functions are called, by their steps
    bool counts_itself;  // takes itself from the statements that are left, and looks whether there are any
    std::uint8_t run;    // how many statements with code follow one another from here on, at most longest_run
    std::uint8_t depth;  // how many loops it is in
    Label head;          // in front of it
    Label fail;          // to the general handler, or no more statements are left
    Label pause_again;   // of a WHILE: none are left behind its WEND, which has left the entry on the stack
    Label branch;        // of an IF: to a line that was not known
    Label entry;         // from elsewhere
};

inline constexpr std::size_t most_places = 256;
inline constexpr std::uint8_t longest_run = 3;

class Region {
  public:
    void clear();

    // The place of a statement, which is added when it is new; null when there is no room.
    Place* find_or_add(Token* at);
    Place* find(const Token* at);

    std::size_t count() const { return used; }
    Place& operator[](std::size_t index) { return places[index]; }

    // Those that have code, in the order in which they get it.
    void append(Place& place) { sequence[sequence_count++] = &place; }
    std::span<Place* const> natives() const { return {sequence.data(), sequence_count}; }

    // ---- What a rehearsal tells ----

    void lead_to(Token* at);
    enum class Way : std::uint8_t { read, written, subscript };
    void note_use(const void* storage, Type type, Way way, const Place& place);
    void note_whole_register(int number) { deepest_whole = std::max(deepest_whole, number); }

    // Makes places of what the statement leads to from the `first` pending one on; false when there is no
    // room.
    bool note_targets(const Place& place, std::size_t first);

    // ---- Which variables are used most ----

    struct Use {
        const void* storage;
        Type type;
        Way way;
        std::uint16_t place;
    };
    std::span<const Use> all_uses() const { return {uses.data(), use_count}; }
    int most_wholes() const { return deepest_whole + 1; }  // that an expression keeps in registers at a time

    // Statements that are to be looked at, the last one first.
    struct Pending {
        std::array<Token*, 4 * most_places> tokens;
        std::size_t count;
    } pending;

    // Finds out how deep in loops the statements are: a jump back in the program is a loop's end.
    void find_loops();

    // Finds out how long control stays in the code once it has come in.
    void find_runs();

  private:
    static constexpr std::size_t slots = 1024;

    std::array<Place, most_places> places;
    std::size_t used;
    std::array<Place*, most_places> sequence;
    std::size_t sequence_count;
    std::array<std::uint16_t, slots> table;  // places by token, plus 1
    std::array<Use, 1024> uses;
    std::size_t use_count;
    int deepest_whole;
    struct Jump {
        std::uint16_t from;
        std::uint16_t to;
    };
    std::array<Jump, 2 * most_places> jumps;
    std::size_t jump_count;
};

}  // namespace korvane::native
