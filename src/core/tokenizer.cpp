#include "core/tokenizer.h"

#include "core/characters.h"
#include "core/errors.h"
#include "core/keywords.h"
#include "core/messages.h"
#include "platform/memory.h"
#include "values/literals.h"

namespace korvane {

Tokenizer tokenizer;

namespace {

constexpr char fold(std::uint8_t c) {
    return fold_to_upper(static_cast<char>(c));
}

constexpr bool is_punctuation(std::uint8_t c) {
    for (const char mark : std::string_view("#()*+,-./:;<=>@\\^")) {
        if (c == static_cast<std::uint8_t>(mark)) return true;
    }
    return false;
}

// "&" is no token of its own; it only begins a hexadecimal or octal number.
constexpr bool begins_radix_literal(const std::uint8_t* text) {
    return text[0] == '&' && (fold(text[1]) == 'H' || fold(text[1]) == 'O');
}

constexpr bool begins_number(const std::uint8_t* text) {
    return is_digit(text[0]) || (text[0] == '.' && is_digit(text[1])) || begins_radix_literal(text);
}

void skip_blanks(const std::uint8_t*& text) {
    while (is_blank(*text))
        ++text;
}

void clear(Token& token) {
    fill_bytes(&token, 0, sizeof token);
    token.execute = execute_first;
}

// `text` stands behind the opening quote.
void read_string(const std::uint8_t*& text, Token& token, bool quote_may_be_missing) {
    token.kind = STRING_LITERAL;
    token.string.bytes = text;
    while (*text != 0 && *text != '"')
        ++text;
    token.string.length = static_cast<std::uint32_t>(text - token.string.bytes);
    if (*text == '"') {
        ++text;
    } else if (!quote_may_be_missing) {
        raise(message::unterminated_string);
    }
}

void read_number(const std::uint8_t*& text, Token& token) {
    Value value;
    if (!read_literal(text, value)) return;
    token.kind = NUMBER;
    token.value_type = value.type;
    token.number.integer = value.integer;
    token.number.as_double = is_integer(value.type) ? static_cast<double>(value.integer) : value.real;
}

// One type suffix; two ampersands are taken together.
void append_suffix(const std::uint8_t*& text, Token& token, int length) {
    const std::uint8_t suffix = *text;
    if (suffix != '%' && suffix != '!' && suffix != '#' && suffix != '$' && suffix != '&') return;
    token.name[length] = static_cast<char>(suffix);
    ++text;
    if (suffix == '&' && *text == '&') {
        token.name[length + 1] = '&';
        ++text;
    }
}

// A word runs over letters and digits. Only the first 37 characters of a name count.
void read_word(const std::uint8_t*& text, Token& token) {
    char word[max_identifier_characters + 1];
    int length = 0;
    const std::uint8_t* start = text;
    for (; is_letter(*text) || is_digit(*text); ++text) {
        if (length < max_identifier_characters) word[length++] = fold(*text);
    }
    const auto full_length = text - start;
    const std::uint8_t keyword =
        full_length == length ? find_keyword({word, static_cast<std::size_t>(length)}) : 0;
    // INPUT is the only keyword that takes a suffix: with "$" it is the name of a function.
    const bool is_input_function = keyword == KW_INPUT && *text == '$';
    if (keyword != 0 && !is_input_function) {
        token.kind = keyword;
        return;
    }
    token.kind = IDENTIFIER;
    copy_bytes(token.name, word, static_cast<std::size_t>(length));
    append_suffix(text, token, length);
}

void read_punctuation(const std::uint8_t*& text, Token& token) {
    const std::uint8_t c = *text++;
    if (c == '?') {
        token.kind = KW_PRINT;
    } else if (c == '\'') {
        token.kind = KW_REM;
    } else if (is_punctuation(c)) {
        token.kind = c;
    } else {
        raise(message::syntax_error);
    }
}

// Reads one token; false ends the line (after a remark or an error).
bool read_token(const std::uint8_t*& text, Token& token, bool after_load) {
    if (*text == '"') {
        read_string(++text, token, after_load);
    } else if (begins_number(text)) {
        read_number(text, token);
    } else if (is_letter(*text)) {
        read_word(text, token);
    } else {
        read_punctuation(text, token);
    }
    return !error_pending();
}

}  // namespace

int tokenize(const std::uint8_t* text) {
    int count = 0;
    Token* tokens = tokenizer.scratch;
    for (;;) {
        skip_blanks(text);
        clear(tokens[count]);
        if (*text == 0) break;
        if (count == max_tokens_per_line) {
            raise(message::too_many_tokens);
            break;
        }
        // A file name may be typed without its closing quote (deliberate).
        const bool after_load = count > 0 && tokens[count - 1].kind == KW_LOAD;
        if (!read_token(text, tokens[count], after_load)) {
            // What was begun when the error was found is no token.
            clear(tokens[count]);
            break;
        }
        // The rest of a remark is not looked at, so it may hold anything.
        if (tokens[count++].kind == KW_REM) {
            clear(tokens[count]);
            break;
        }
    }
    return count + 1;
}

}  // namespace korvane
