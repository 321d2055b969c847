#include "program/execution.h"

namespace korvane {

Execution execution;
ExecutionBuffer execution_buffer;

}  // namespace korvane
