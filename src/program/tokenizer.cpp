#include "program/tokenizer.h"

#include "platform/characters.h"
#include "platform/memory.h"
#include "program/errors.h"
#include "program/keywords.h"
#include "program/literals.h"
#include "program/messages.h"

namespace korvane {

Tokenizer tokenizer;

namespace {

constexpr char fold(std::uint8_t c) {
    return fold_to_upper(static_cast<char>(c));
}

constexpr bool is_punctuation(std::uint8_t c) {
    for (const char mark : std::string_view("#()*+,-./:;<=>@\\^"))
        if (c == static_cast<std::uint8_t>(mark)) return true;
    return false;
}

void skip_blanks(const std::uint8_t*& text) {
    while (is_blank(*text))
        ++text;
}

void clear(Token& token) {
    fill_bytes(&token, 0, sizeof token);
    token.execute = tokenizer.first_handler;
}

// From behind an opening quote to the closing one or the end of the text.
const std::uint8_t* end_of_string(const std::uint8_t* text) {
    while (*text != 0 && *text != '"')
        ++text;
    return text;
}

// `text` stands behind the opening quote.
void read_string(const std::uint8_t*& text, Token& token, bool quote_may_be_missing) {
    token.kind = STRING_LITERAL;
    token.string.bytes = text;
    text = end_of_string(text);
    token.string.length = static_cast<std::uint32_t>(text - token.string.bytes);
    if (*text == '"')
        ++text;
    else if (!quote_may_be_missing)
        raise(message::unterminated_string);
}

void read_number(const std::uint8_t*& text, Token& token) {
    Value value;
    if (!read_literal(text, value)) return;
    token.kind = NUMBER;
    token.value_type = value.type;
    token.number.integer = value.integer;
    token.number.as_double = is_integer(value.type) ? static_cast<double>(value.integer) : value.real;
}

// The characters of one type suffix, 0 when there is none; two ampersands are taken together.
std::size_t suffix_length(const std::uint8_t* text) {
    switch (*text) {
        case '%':
        case '!':
        case '#':
        case '$':
            return 1;
        case '&':
            return text[1] == '&' ? 2 : 1;
        default:
            return 0;
    }
}

// A word runs over letters and digits. Only the first 37 characters of a name count.
struct Word {
    char characters[max_identifier_characters];  // in upper case
    std::size_t length;                          // of these
    const std::uint8_t* end;                     // behind the word in the text
    std::uint8_t keyword;                        // 0: a name

    explicit Word(const std::uint8_t* text) : length(0), end(text) {
        for (; is_letter(*end) || is_digit(*end); ++end)
            if (length < max_identifier_characters) characters[length++] = fold(*end);
        keyword = end == text + length ? find_keyword({characters, length}) : 0;
        // INPUT is the only keyword that takes a suffix: with "$" it is the name of a function.
        if (keyword == KW_INPUT && *end == '$') keyword = 0;
    }
};

void read_word(const std::uint8_t*& text, Token& token) {
    const Word word(text);
    text = word.end;
    token.kind = word.keyword;
    if (word.keyword != 0) return;
    token.kind = IDENTIFIER;
    const std::size_t suffix = suffix_length(text);
    copy_bytes(token.name, word.characters, word.length);
    copy_bytes(token.name + word.length, text, suffix);
    text += suffix;
}

void read_punctuation(const std::uint8_t*& text, Token& token) {
    const std::uint8_t c = *text++;
    if (c == '?')
        token.kind = KW_PRINT;
    else if (c == '\'')
        token.kind = KW_REM;
    else if (is_punctuation(c))
        token.kind = c;
    else
        raise(message::syntax_error);
}

// Reads one token; false ends the line (after a remark or an error).
bool read_token(const std::uint8_t*& text, Token& token, bool after_load) {
    if (*text == '"')
        read_string(++text, token, after_load);
    else if (begins_literal(text))
        read_number(text, token);
    else if (is_letter(*text))
        read_word(text, token);
    else
        read_punctuation(text, token);
    return !error_pending();
}

}  // namespace

std::size_t token_length(const std::uint8_t* text) {
    if (*text == '"') {
        const std::uint8_t* end = end_of_string(text + 1);
        return static_cast<std::size_t>(end - text) + (*end == '"');
    }
    if (!is_letter(*text)) return begins_literal(text) ? literal_length(text) : 1;
    const std::uint8_t* end = text;
    while (is_letter(*end) || is_digit(*end))
        ++end;
    // Only a name takes the character behind it. Most words are followed by another one, so that it need not
    // be found out what they are.
    const std::size_t suffix = suffix_length(end);
    const bool takes_suffix = suffix != 0 && Word(text).keyword == 0;
    return static_cast<std::size_t>(end - text) + (takes_suffix ? suffix : 0);
}

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
