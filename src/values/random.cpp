#include "values/random.h"

#include "program/errors.h"
#include "program/messages.h"
#include "values/convert.h"

namespace korvane {

RandomState random_state;

namespace {

constexpr std::uint32_t initial_seed = 0x50000;
constexpr std::uint32_t multiplier = 179203;
constexpr std::uint32_t increment = 3957053;
constexpr std::uint32_t seed_mask = 0xFFFFFF;

// The new seed's result, remembered. 24 bits fit a binary32 mantissa, so it is a SINGLE as it is.
Value result_of(std::uint32_t seed) {
    random_state.seed = seed & seed_mask;
    random_state.last = static_cast<double>(static_cast<std::int32_t>(random_state.seed)) * 0x1p-24;
    return Value::of_real(random_state.last, Type::SINGLE);
}

// The argument truncated toward zero; only its low 32 bits matter, but a number beyond INT64 has none.
std::int64_t truncate(const Value& argument) {
    if (is_integer(argument.type)) return argument.integer;
    constexpr double limit = 9223372036854775808.0;
    if (argument.real >= -limit && argument.real < limit) return static_cast<std::int64_t>(argument.real);
    raise(message::overflow);
    return 0;
}

}  // namespace

void reset_random() {
    random_state = {initial_seed, 0};
}

Value next_random() {
    return result_of(0u - (random_state.seed * multiplier + increment));
}

Value random_for(const Value& argument) {
    const double number = to_double(argument);
    if (error_pending()) return Value::nothing();
    const auto start = static_cast<std::uint32_t>(truncate(argument));
    if (error_pending()) return Value::nothing();
    if (number < 0) return result_of(start * multiplier - increment);
    if (number > 0) return next_random();
    return Value::of_real(random_state.last, Type::SINGLE);
}

void randomize(std::int64_t n) {
    random_state.seed = (static_cast<std::uint32_t>(n) & 0xFFFF) * 256 + 80;
}

}  // namespace korvane
