#include "values/clear.h"

#include "program/arenas.h"
#include "program/errors.h"
#include "values/common_list.h"
#include "values/user_functions.h"
#include "values/variables.h"

namespace korvane {

void clear_data() {
    reset_data_arena();
    clear_variables();
    forget_user_functions();
    clear_common_list();
    errors.pending = false;
}

}  // namespace korvane
