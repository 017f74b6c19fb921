#include "objects/native_members.h"

#include "values/error.h"

namespace zobase {

void refuse_subscripts(VmStack* stack, unsigned long long argc) {
    if (argc == 0) return;
    const ClassMember* member = stack->context.member;
    throw RuntimeError(ERR_NOT_AN_ARRAY, member ? member->name : String(""));
}

void require_arguments(unsigned long long argc, unsigned long long least, unsigned long long most) {
    if (argc < least || argc > most) throw RuntimeError(ERR_ARGUMENT_INVALID);
}

}  // namespace zobase
