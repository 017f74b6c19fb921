// The step SCAN takes at the end of every round.
#include "builtins/handlers.h"
#include "builtins/work_area.h"
#include "vm/param.h"

namespace zobase {

// In the loop's own work area, whatever the body selected: SKIP, then
// whether the walk has reached the end. One call where the loop would
// otherwise select, skip, select again and ask eof().
void stackcall___scan_next(VmStack* stack, unsigned long long, Variant* result) {
    DataSession_Object& session = current_session(stack);
    session.select(session.select(stack, Param(stack, 1)));
    Table_Object* table = current_table(stack);
    table->movenext(stack, 1);
    result->set_bool(table->eof());
}

}  // namespace zobase
