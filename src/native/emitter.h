// Makes the machine code of statements.
//
// A statement's code reads and writes variables where they live. Some are kept in registers too
// (VariableRegisters), but whatever changes one writes it to memory at once, so that memory is always right
// and code may be left anywhere. Before anything is written, all that can go wrong has been looked at: where
// it does, the code leaves to the general handler, which executes the statement from its start and finds the
// reason.
//
// Registers, which nobody outside keeps anything in while statements follow one another (fast/run_fast.cpp):
//
//   rbx                   the statements that are left until the run loop gets control back
//   rbp, r14, r13         the variable table, the interpreter's own state, the program arena; rbp is in the
//                         shortest forms of most instructions
//   r12                   what tells a number from an infinity
//   xmm0 to xmm6          an expression's values, the first ones from xmm0 on
//   rdi rsi rcx r8-r11    the same for integers, in the order in which a function takes its arguments; from
//                         r11 down, as far as they do not need them, variables that are subscripts
//   xmm7 to xmm13         variables. One that a statement adds to holds the sum before that is known to be
//                         a number: whoever comes back in loads all of them
//   rax rdx xmm14 xmm15   for a moment
//
// Everything is emitted twice. The first time (a rehearsal) nothing is kept of it: it only shows whether
// there is machine code for the statement, which statements it leads to, and what variables it uses.
#pragma once

#include <array>
#include <cstdint>

#include "fast/expression.h"
#include "fast/nodes.h"
#include "fast/places.h"
#include "native/assembler.h"
#include "native/region.h"
#include "native/variable_registers.h"

namespace korvane {
struct ForEntry;
struct VariableEntry;
}  // namespace korvane

namespace korvane::native {

using fast::Node;
using fast::node_at;

inline constexpr Vector scratch = Vector::xmm15;
inline constexpr Vector other_scratch = Vector::xmm14;

// The name of a built-in function as a number: none has more than seven characters.
consteval std::uint64_t name_number(const char* name) {
    std::uint64_t number = 0;
    for (int i = 0; name[i] != 0; ++i)
        number |= static_cast<std::uint64_t>(name[i]) << 8 * i;
    return number;
}
inline std::uint64_t name_of(const Node& call) {
    std::uint64_t number;
    __builtin_memcpy(&number, call.token[-1].name, sizeof number);
    return number;
}

class Emitter {
  public:
    explicit constexpr Emitter(Region& statements) : region(statements), code({}) {}

    // Emits the statement to nowhere: false when there is no code for it. `region` has then been told what it
    // leads to and what it uses.
    bool rehearse(Place& place);

    // Emits the region; false when it does not fit, or some statement has no code after all.
    bool emit_region(std::span<std::byte> room);

    std::size_t size() const { return code.position(); }
    bool is_full() const { return code.full(); }

  private:
    // What is executed rarely, and stands behind everything else.
    struct Detour {
        enum class Kind : std::uint8_t { rounding, subscript, verifying, opening, record } kind;
        Vector number;    // to be rounded
        Register target;  // where it goes
        Place* place;
        const Token* loop;  // of a NEXT: the statement that its turns begin with; the record to be copied
        std::int32_t sign;  // of the loop's step
        Label start;
        Label back;
    };

    // What a FOR tells of its loop.
    struct Bounds {
        fast::Expression start;
        fast::Expression limit;
        std::int32_t sign;  // of the step
        bool is_real;       // the variable
        bool has_whole_limit;
    };

    // ---- Statements (statements.cpp, loops.cpp) ----
    void emit_statement(Place& place);
    void emit_assignment(Token* at);
    void emit_if(Token* at);
    void emit_gosub(Token* at);
    void emit_return();
    void emit_for(Token* at);
    bool read_bounds(Token* at, Bounds& bounds);
    Condition emit_bounds(const Bounds& bounds, Type type);
    bool emit_opening(Token* at, Place* closer);
    void write_loop_variable(const VariableEntry& variable);
    std::uint32_t key_of(Place& place);
    void emit_next(Token* at);
    Condition emit_sum_of_reals(const ForEntry& entry, const VariableEntry& variable, std::int32_t sign);
    Condition emit_sum_of_wholes(const ForEntry& entry, const VariableEntry& variable, std::int32_t sign);
    void emit_while(Token* at);
    void emit_wend();
    bool emit_condition_of(Token* at, Condition& when_true);
    void end_wend();
    void emit_else(Token* at);
    void emit_swap(Token* at);
    void emit_read(Token* at);
    void emit_on(Token* at);
    void find_place(const fast::Place& target, int wholes);
    void push_return(const Token* at);
    void write_scalar(const VariableEntry& variable, std::int16_t value);
    void prepare_real(Type type, const Node& value, bool counting = true);
    void write_real(Operand memory, Type type);
    void write_real_variable(const VariableEntry& variable);
    void write_element(const Node& element, std::int16_t value);
    void write_text(Operand memory, std::int16_t value);
    void write_whole(Operand memory, Type type, Register number);
    void fit_or_fail(Type type, Register number);
    bool may_be_then_part() const;
    void end_then_part();
    void keep_then_part(const Token* opener, const Token* first, bool is_lone);
    Label& branch_to(Token* at);
    void go_on_or_branch(Token* at);
    void find_top(const std::uint32_t& count, std::uint32_t most, int size);
    void find_last(const std::uint32_t& count, int size);
    Operand field(const void* address, Register offset);
    void write_position(const Position& position, Operand memory);
    void lead_to_one(std::uint8_t kind);

    // ---- Control (emitter.cpp) ----
    Label& lead_to(Token* at);  // where control goes on in front of a statement
    void go_on(Token* at);      // the same behind the last instruction of a statement
    void load_token(Register target, const Token* at);
    void compare_token(const Token* at);  // with edi
    void emit_leaving(Place& place);
    void emit_ends(Place& place);
    void emit_common_ends();
    void emit_detours();
    void emit_rounding(const Detour& detour);
    void emit_subscript(const Detour& detour);
    void emit_verifying(const Detour& detour);
    void call_or_fail(const void* function);
    void jump_to_function(std::uint64_t (*function)(Token* at, std::uint64_t budget));
    void begin(std::span<std::byte> room);
    static void clear_labels(Place& place);
    void count();

    // ---- Expressions (expressions.cpp, elements.cpp, functions.cpp) ----
    //
    // `reals` and `wholes` tell how many values are kept below: a result goes into the next register.
    void real(std::int16_t index, int reals, int wholes);
    void whole(std::int16_t index, int reals, int wholes);
    Operand real_operand(std::int16_t index, int reals, int wholes);
    Operand variable_operand(const Node& node, int reals);
    void real_binary(const Node& node, int reals, int wholes);
    void real_power(const Node& node, int reals, int wholes);
    void whole_binary(const Node& node, int reals, int wholes);
    void divide(bool remainder, Register left, Register right);
    Operand element(const Node& node, int reals, int wholes);
    Register subscript(const Node& argument, std::int64_t bound, int reals, int wholes);
    const KeptVariable* find_whole_of(const Node& node) const;
    Condition compare(const Node& relation, int reals, int wholes);
    Condition condition_of(std::int16_t index);
    void exact_or_fail(Vector number);
    void finite_or_fail(Vector number, bool counting = false);
    void round_to_whole(Vector number, Register target);
    void real_call(const Node& node, int reals, int wholes);
    void whole_call(const Node& node, int reals, int wholes);
    const Operand* find_bound(const Node& variable) const;
    bool enter_function(const Node& call, int& reals, int wholes, std::int16_t& body);
    void round_down(Vector number, bool toward_zero);
    void to_single(Vector number);
    void whole_to_real(Register number, Vector target);
    void call(const void* function, int reals, int wholes);
    void begin_call(int reals, int wholes);
    void end_call(const void* function, int reals, int wholes);
    void load_variables();

    // ---- What has no code of its own is called (calls.cpp) ----
    void call_with(const void* function, int count, int reals, int wholes);
    void call_side(const Node& node, const void* function, int reals, int wholes);
    void real_by_steps(const Node& node, int reals, int wholes);
    void whole_by_steps(const Node& node, int reals, int wholes);
    void put_record(const Token* at);
    void begin_taking(bool allocates, bool draws);

    // ---- Texts (texts.cpp): two registers for integers each, where its bytes are and how many ----
    void text(std::int16_t index, int reals, int wholes);
    void text_by_function(const Node& node, int reals, int wholes);
    void text_from_call(const void* function, int count, int reals, int wholes);
    Condition compare_texts(const Node& relation, int reals, int wholes);

    // ---- What is where ----
    Vector real_register(int number);
    Register whole_register(int number);
    Operand place(const void* address);
    Operand literal(const Token* token);

    // An operation with a place in memory as its second operand.
    template <typename First>
    void on(Operation operation, First first, const void* address) {
        on_place(Assembler::with_register(operation, first), address);
    }
    void on_place(std::uint32_t operation, const void* address);
    void copy(Vector target, Operand source);
    void load_real(Vector target, Type type, Operand memory);
    void load_whole(Register target, Type type, Operand memory);
    void keep(const KeptVariable& variable, Vector number);
    void find_whole(const KeptVariable& variable);
    void use(const void* storage, Type type, Region::Way way = Region::Way::read);

    void give_up() { has_failed = true; }
    void fail_if(Condition condition) { code.jump_if(condition, current->fail); }
    void fail_if_no(Register truth);  // its low byte

    Detour* add_detour(Detour::Kind kind);

    // The arguments of user functions that are being computed.
    struct Binding {
        const void* storage;
        Operand value = Register::rax;
    };

    Region& region;
    Assembler code;
    Place* current = nullptr;
    const Place* next = nullptr;  // whose code stands behind that of the current one
    Label unused;
    bool is_rehearsal = false;
    bool has_failed = false;
    VariableRegisters variables_kept;
    std::array<Binding, 24> bindings;
    std::size_t binding_count = 0;
    int calls_entered = 0;
    Vector first_real;                       // in the place of xmm0: the variable that the statement adds to
    std::array<const double*, 16> literals;  // of different values
    std::size_t literal_count = 0;
    std::array<Detour, 96> detours;
    std::size_t detour_count = 0;
    Label pausing;
    Label general;
    Label general_if;
    Label general_taking;
    Label next_elsewhere;
    Label leaving;
    Label leaving_anywhere;
    Label loading;
};

}  // namespace korvane::native
