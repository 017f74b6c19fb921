// The built-in classes: name, constructor data, member rows. The members
// themselves are the object model's (objects/).
#include "builtins/library.h"
#include "objects/array_enumerator.h"
#include "objects/collection_object.h"
#include "objects/exception_object.h"
#include "objects/operand_object.h"
#include "objects/thread_object.h"
#include "tables/data_session.h"
#include "tables/table_object.h"

namespace zobase {

namespace {

const builtin_class_data_st custom_class_data = {[](VmStack*, Class* c) { return new Object(c); }, true};
// The object SCATTER NAME and Json.Decode make: nothing but what is added.
const builtin_class_data_st empty_class_data = {[](VmStack*, Class* c) { return new Object(c); }, false, true};
const library_class_member_row_st no_members[] = {{nullptr, nullptr, nullptr, nullptr, nullptr}};

}  // namespace

const library_class_row_st core_class_rows[] = {
    {"Array.Iterator", &array_enumerator_class_data, array_enumerator_members},
    {"Collection", &collection_class_data, collection_members},
    {"Collection.ForwardIndexIterator", &collection_iterator_class_data, collection_iterator_members},
    {"Collection.ForwardKeyIterator", &collection_iterator_class_data, collection_iterator_members},
    {"Collection.ReverseIndexIterator", &collection_iterator_class_data, collection_iterator_members},
    {"Collection.ReverseKeyIterator", &collection_iterator_class_data, collection_iterator_members},
    {"Custom", &custom_class_data, no_members},
    {"Empty", &empty_class_data, no_members},
    {"Exception", &exception_class_data, exception_members},
    {"File", &table_class_data, no_members},
    {"Operand", &operand_class_data, operand_members},
    {"Session", &session_class_data, session_members},
    {"Thread", &thread_class_data, thread_members},
    {nullptr, nullptr, nullptr},
};

}  // namespace zobase
