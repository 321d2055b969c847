// What the programs that play transcripts have in common: which cases are played, and by how many processes.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "machine.h"
#include "player.h"
#include "program_words.h"
#include "transcript.h"

namespace korvane::transcript {

struct CaseChoice {
    std::vector<std::filesystem::path> inputs;  // files, and folders of files
    std::string filter;                         // only cases whose name contains this
    std::filesystem::path named;                // only cases that this file names, in its order
    unsigned jobs = 4;                          // processes to use
    PlayOptions play;

    test::ProgramOptions options();
};

// "file: title".
std::string name_of(const Case& test);

// The chosen cases, by the names of their files. Mistakes in the files are reported in `problems`.
std::vector<Case> read_cases(const CaseChoice& choice, std::vector<std::string>& problems);

// Brings a machine for cases like this one to its first prompt; the result is the report of a failure.
std::string start_machine(const Case& like, std::unique_ptr<host::Machine>& machine,
                          const std::filesystem::path& scratch, const host::ImageSource& image,
                          const PlayOptions& options);

// Has each job done in a process of its own; `work` gives the number of its failures. The result is their
// sum.
int play_in_processes(const CaseChoice& choice, const std::function<int(unsigned job)>& work);

// Tells how many cases there were; gives the program's status.
int conclude(std::size_t cases, int failures);

}  // namespace korvane::transcript
