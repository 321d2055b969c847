// How long what is remembered about the program stays true.
//
// A line's tokens are cut once and kept in the token cache. The records of one cache, from the time that it
// begins to fill to the time that it is emptied, are an epoch (program.cache_epoch). Every change of the
// program ends it: a line stored or deleted, RENUM, MERGE, CHAIN, LOAD, NEW. Then all records are gone, and
// with them everything that was written into them: specialised statements, the targets of jumps, where FOR,
// WHILE and IF skip to, what names stand for. So what is remembered in a record needs no date of its own, on
// two conditions. The record must be in the cache: those in the execution buffer are overwritten as soon as
// execution moves to another line, and those of the direct line outlive the program, so neither remembers a
// line of the program (remembers_lines). And a statement must begin where one is taken to begin: then no two
// statements share a record, and each may write its own.
//
// Variables have an epoch of their own within that, the clear generation (arenas.generation). It ends with
// the token cache too, because open loops remember statements for one generation.
//
// The direct line's records die with it, when the next line is typed, or with the epoch, whichever is later.
// Its statements are specialised like a program's, but keep no line of the program. What leads back into it
// (open loops; RETURN ends the run instead) counts as older from the moment when the next line is typed
// (forget_direct_line), however the line came to its end: an error, Escape or STOP in it, or in the program
// that it has started. The clear generation ends then too, and with it the machine code for the line: the
// next line's records lie in the same place, and nothing could tell the one from the other.
//
// Positions (line and record) outlive the epoch: they lie in the control stacks, in trap frames and in the
// place for CONT, and are taken literally in whatever program is there when they are used. Those in the
// stacks say in which epoch they were taken; all others count as older. A position of the current epoch leads
// to the statement itself, and specialised statements follow no other. The rest go through
// jump_to_position(): when it is not plain from the tokens that a statement begins there, the line runs from
// a copy of its tokens in the execution buffer, by the general handlers, until execution moves to another
// line or to a position of the epoch. What is written into the copy's records is seen by nobody else, and
// positions that are taken while it runs belong to no epoch.
#pragma once

#include <cstdint>

#include "program/token.h"

namespace korvane {

inline constexpr std::uint32_t no_epoch = 0;

// Whether a statement begins at the record, as far as the tokens in front of it tell: at the start of the
// line, behind ":" and behind ELSE. (Not behind THEN: what stands there may lead past its ELSE, which is
// right only when it comes from its IF.)
bool begins_statement(const Token* tokens, std::uint32_t record);

// Makes a copy of the current line's tokens current.
void run_from_copy(std::uint32_t count);

}  // namespace korvane
