// What a user answers to INPUT: how the line falls into fields, and what a field is worth to a variable.
#pragma once

#include <optional>
#include <string_view>

#include "numbers/value.h"

namespace korvane {

// Takes the fields of a reply off its front, in order.
class ReplyFields {
  public:
    explicit ReplyFields(std::string_view reply) : rest_(reply) {}

    // The next field: a quoted one without its quotes, another one up to the comma without blanks around it.
    // Nothing when the text has ended, except that an empty reply has one empty field.
    std::optional<std::string_view> next();

    // Whether anything but spaces is left.
    bool has_more() const;

  private:
    std::string_view rest_;
    bool any_taken_ = false;
};

// The number that a field stands for, if it is one and the type can hold it. The integer form comes first
// whatever the type is (deliberate, and unlike READ): a whole number outside the INT64 range needs a point or
// an exponent. Raises nothing.
std::optional<Value> number_in_field(std::string_view field, Type type);

}  // namespace korvane
