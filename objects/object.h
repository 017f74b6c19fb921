#pragma once
// The object model's lifetime rule. The protocol every object answers (the
// class Object) is the VM's, in vm/object.h.
#include "vm/object.h"

namespace zobase {

// Makes released objects go through their destructor; the runtime calls it at start.
void install_object_destruction();

}  // namespace zobase
