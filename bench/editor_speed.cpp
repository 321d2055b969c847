// editor_speed [--rounds N] IMAGE: how long the image takes to load, save, merge, renumber, search and edit
// programs of up to 65,536 lines on the hosted firmware. The yardsticks are what cannot be done without: the
// same calls of the firmware, and the C library's moves and copies of the same bytes.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "rounds.h"
#include "session.h"

namespace korvane::bench {
namespace {

constexpr int most_lines = 65536;
constexpr int step = 10;  // between line numbers
constexpr int long_program = 65000;
constexpr int long_program_start = 10000;    // its first line number
constexpr int inserted = 500;                // lines that are inserted into it
constexpr int typed = 20;                    // lines that are typed into it in a round
constexpr std::size_t line_entry_size = 32;  // bytes of a line in the interpreter's index

// A stored line: its head, a zero byte, and padding to a multiple of 4 around its text.
std::size_t record_size(std::size_t text_length) {
    return (8 + text_length + 1 + 3) / 4 * 4;
}

std::string text_of_line(int index) {
    static constexpr const char* texts[] = {
        "LET TOTAL = TOTAL + PRICE(ITEM) * COUNT(ITEM)",
        "PRINT \"Item\"; ITEM; TAB(20); PRICE(ITEM)",
        "IF TOTAL > LIMIT THEN GOSUB ",
        "FOR I = 1 TO 10: A(I) = I * I: NEXT I",
        "REM ---- the next part ----",
    };
    std::string text = texts[index % std::size(texts)];
    if (text.back() == ' ') text += std::to_string((index / 2 + 1) * step);
    return text;
}

// Lines in the order of their numbers, or in reverse.
std::string program_text(int first_number, int distance, int count) {
    std::string text;
    for (int i = 0; i < count; ++i)
        text += std::to_string(first_number + i * distance) + ' ' + text_of_line(i) + "\r\n";
    return text;
}

// The same lines in another order.
std::string out_of_order(const std::string& text, bool shuffled) {
    std::vector<std::string> lines;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = text.find('\n', start) + 1;
        lines.push_back(text.substr(start, end - start));
        start = end;
    }
    if (shuffled)
        std::ranges::shuffle(lines, std::mt19937(1));
    else
        std::ranges::reverse(lines);
    std::string result;
    for (const std::string& line : lines)
        result += line;
    return result;
}

void write_file(const std::filesystem::path& path, const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
}

std::string read_file(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The program of so many lines.
std::string file_name(int lines) {
    return std::to_string(lines) + ".BAS";
}

std::string load_command(int lines) {
    return "LOAD \"" + file_name(lines) + "\"";
}

// Files of the volume, by the firmware's services that the image uses as well.
class PlainFile {
  public:
    PlainFile(Session& session, const std::u16string& name, std::uint64_t mode) {
        uefi::SimpleFileSystemProtocol& volume = *session.machine().firmware().volumes().front();
        check(volume.OpenVolume(&volume, &root_));
        check(root_->Open(root_, &file_, name.c_str(), mode, 0));
    }
    ~PlainFile() {
        file_->Close(file_);
        root_->Close(root_);
    }
    PlainFile(const PlainFile&) = delete;
    PlainFile& operator=(const PlainFile&) = delete;

    std::uint64_t read(char* to, std::uint64_t size) {
        check(file_->Read(file_, &size, to));
        return size;
    }
    void write(std::string_view text) {
        std::uint64_t size = text.size();
        check(file_->Write(file_, &size, text.data()));
    }

  private:
    static void check(uefi::Status status) {
        if (uefi::is_error(status)) give_up("the hosted firmware refuses the yardstick's file");
    }

    uefi::FileProtocol* root_ = nullptr;
    uefi::FileProtocol* file_ = nullptr;
};

// Reads in the blocks of LOAD, and keeps the bytes.
double plain_load(Session& session, int lines) {
    const std::string name = file_name(lines);
    std::vector<char> bytes(std::filesystem::file_size(session.file(name)));
    const double start = processor_seconds();
    PlainFile file(session, std::u16string(name.begin(), name.end()), uefi::file_mode_read);
    char block[512];
    std::size_t done = 0;
    while (const std::uint64_t size = file.read(block, sizeof block)) {
        std::memcpy(bytes.data() + done, block, size);
        done += size;
    }
    return processor_seconds() - start;
}

// Writes the pieces that SAVE writes.
double plain_save(Session& session, int lines) {
    std::vector<std::string> numbers;
    std::vector<std::string> texts;
    for (int i = 0; i < lines; ++i) {
        numbers.push_back(std::to_string((i + 1) * step));
        texts.push_back(text_of_line(i));
    }
    const double start = processor_seconds();
    PlainFile file(session, u"PLAIN.BAS",
                   uefi::file_mode_create | uefi::file_mode_write | uefi::file_mode_read);
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        file.write(numbers[i]);
        file.write(" ");
        file.write(texts[i]);
        file.write("\r\n");
    }
    return processor_seconds() - start;
}

// What a program of so many lines takes in the interpreter's memory.
struct StoredProgram {
    explicit StoredProgram(int lines) : index(static_cast<std::size_t>(lines + inserted) * line_entry_size) {
        std::size_t size = 0;
        for (int i = 0; i < lines; ++i)
            size += record_size(text_of_line(i).size());
        records.resize(size);
    }

    std::vector<char> records;
    std::vector<char> index;
};

// Moves all records and index entries up by one line of the length, `inserted` times.
double plain_insertion(StoredProgram& program) {
    const std::size_t size = record_size(text_of_line(0).size());
    std::vector<char>& records = program.records;
    std::vector<char>& index = program.index;
    return seconds_each(inserted, [&] {
        std::memmove(records.data() + size, records.data(), records.size() - size);
        std::memmove(index.data() + line_entry_size, index.data(), index.size() - line_entry_size);
    });
}

// Copies all records to another place and back.
double plain_renumbering(StoredProgram& program) {
    std::vector<char> other(program.records.size(), 1);
    return seconds_each(1, [&] {
        std::memcpy(other.data(), program.records.data(), other.size());
        std::memcpy(program.records.data(), other.data(), other.size());
    });
}

// Looks at every byte once.
double plain_search(const StoredProgram& program) {
    return seconds_each(
        1,
        [&] {
            if (std::memchr(program.records.data(), '~', program.records.size()) != nullptr)
                give_up("the yardstick found what is not there");
        });
}

class Editor {
  public:
    explicit Editor(const Options& options) : options_(options), session_(options.image, 640, 480) {
        for (const int lines : {most_lines, most_lines / 2})
            write_file(session_.file(file_name(lines)), program_text(step, step, lines));
        write_file(session_.file(file_name(long_program)),
                   program_text(long_program_start, step, long_program));
        for (const int lines : {most_lines, most_lines / 2}) {
            const std::string text = program_text(step, step, lines);
            write_file(session_.file("DOWN" + file_name(lines)), out_of_order(text, false));
            write_file(session_.file("MIXED" + file_name(lines)), out_of_order(text, true));
        }
        // The other way round, so that each line goes to the top.
        write_file(session_.file("TOP.BAS"), program_text(inserted, -1, inserted));
    }

    void measure_all() {
        const Table table("work", "yardstick", milliseconds);
        measure_load(table);
        measure_load_out_of_order(table, "DOWN", "in descending order");
        measure_load_out_of_order(table, "MIXED", "in no order");
        measure_save(table);
        measure_insertion(table);
        measure_typing(table);
        measure_renumbering(table);
        measure_search(table);
    }

  private:
    Comparison compare(const std::function<double()>& subject, const std::function<double()>& yardstick) {
        return take_turns(options_.rounds, subject, yardstick);
    }

    // Saves the program and gives what the file holds.
    std::string saved() {
        session_.enter("SAVE \"SAVED.BAS\"");
        return read_file(session_.file("SAVED.BAS"));
    }

    void expect(bool as_expected, const char* what) {
        if (!as_expected) give_up(std::string(what) + " did not do its work");
    }

    void measure_load(const Table& table) {
        const auto load = [this](int lines) { return session_.seconds_of(load_command(lines)); };
        const Comparison all =
            compare([&] { return load(most_lines); }, [&] { return plain_load(session_, most_lines); });
        expect(saved() == program_text(step, step, most_lines), "LOAD");
        table.row("LOAD of 65,536 lines; firmware's reads", all);
        table.row("LOAD of 65,536 lines; LOAD of 32,768",
                  compare([&] { return load(most_lines); }, [&] { return load(most_lines / 2); }), 2.2);
    }

    void measure_load_out_of_order(const Table& table, const std::string& name, const std::string& order) {
        const auto load = [&](int lines) {
            return session_.seconds_of("LOAD \"" + name + file_name(lines) + "\"");
        };
        const Comparison all = compare([&] { return load(most_lines); },
                                       [&] { return session_.seconds_of(load_command(most_lines)); });
        table.row("LOAD of 65,536 lines " + order + "; in order", all, 4);
        const Comparison growth =
            compare([&] { return load(most_lines); }, [&] { return load(most_lines / 2); });
        table.row("LOAD of 65,536 lines " + order + "; of 32,768", growth, 2.5);
        session_.enter("LOAD \"" + name + file_name(most_lines) + "\"");
        expect(saved() == program_text(step, step, most_lines), "LOAD");
    }

    void measure_save(const Table& table) {
        session_.enter(load_command(most_lines));
        const Comparison save = compare([&] { return session_.seconds_of("SAVE \"SAVED.BAS\""); },
                                        [&] { return plain_save(session_, most_lines); });
        expect(read_file(session_.file("SAVED.BAS")) == program_text(step, step, most_lines), "SAVE");
        table.row("SAVE of 65,536 lines; firmware's writes", save);
    }

    // One line of many that MERGE puts above all others.
    void measure_insertion(const Table& table) {
        StoredProgram plain(long_program);
        const Comparison insertion = compare(
            [&] {
                session_.enter(load_command(long_program));
                return session_.seconds_of("MERGE \"TOP.BAS\"") / inserted;
            },
            [&] { return plain_insertion(plain); });
        const std::string program = saved();
        expect(program.starts_with("1 ") &&
                   program.ends_with("\r\n" + program_text(long_program_start, step, long_program)) &&
                   std::ranges::count(program, '\n') == long_program + inserted,
               "MERGE");
        table.row("inserting at the top of 65,000 lines; moving them", insertion);
    }

    void measure_typing(const Table& table) {
        StoredProgram plain(long_program);
        session_.enter(load_command(long_program));
        int number = long_program_start;
        const Comparison typing = compare(
            [&] {
                double seconds = 0;
                for (int i = 0; i < typed; ++i)
                    seconds += session_.seconds_of(std::to_string(--number) + " REM");
                return seconds / typed;
            },
            [&] { return plain_insertion(plain); });
        expect(saved().starts_with(std::to_string(number) + " REM\r\n"), "typing");
        table.row("a typed line at the top of 65,000; moving them", typing);
    }

    void measure_renumbering(const Table& table) {
        StoredProgram plain(most_lines);
        session_.enter(load_command(most_lines));
        session_.enter("RENUM 100, 0, 20");
        const Comparison renumbering = compare(
            [&] {
                const double forth = session_.seconds_of("RENUM 10, 0, 10");
                return (forth + session_.seconds_of("RENUM 100, 0, 20")) / 2;
            },
            [&] { return plain_renumbering(plain); });
        session_.enter("RENUM 10, 0, 10");
        expect(saved() == program_text(step, step, most_lines), "RENUM");
        table.row("RENUM of 65,536 lines; copying them twice", renumbering);
    }

    void measure_search(const Table& table) {
        const StoredProgram plain(most_lines);
        session_.enter(load_command(most_lines));
        table.row("FIND in 65,536 lines, in vain; one look at each byte",
                  compare([&] { return session_.seconds_of("FIND \"elephant\""); },
                          [&] { return plain_search(plain); }));
    }

    Options options_;
    Session session_;
};

}  // namespace
}  // namespace korvane::bench

int main(int count, char** arguments) {
    korvane::bench::Editor(korvane::bench::parse_options(count, arguments)).measure_all();
    return EXIT_SUCCESS;
}
