// Object lifetime: an object whose last use ended is destroyed through its
// virtual destructor.
#include "objects/object.h"

#include "values/object_ref.h"

namespace zobase {

void delete_object(VmStack*, Object* object) { delete object; }

void install_object_destruction() {
    if (!destroy_object_hook) destroy_object_hook = delete_object;
}

}  // namespace zobase
