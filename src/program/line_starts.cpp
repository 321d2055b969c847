#include "program/line_starts.h"

namespace korvane {

LineStarts line_starts;

}  // namespace korvane
