#pragma once

#include "explorer/command.h"

namespace korvane {

// `PARTITIONS n`: a disk's GPT, or else its MBR.
CommandEnd do_partitions(WordReader& arguments);

// `PARTITION n p`: one entry of it, numbered from 1.
CommandEnd do_partition(WordReader& arguments);

}  // namespace korvane
