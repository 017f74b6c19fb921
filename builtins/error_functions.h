#pragma once
// Handlers of the error functions and of ERROR, ASSERT and THROW.
namespace zobase {

class Variant;
class VmStack;

void stackcall_error(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_message(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_aerror(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_alistallerrors(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_test_asserts_on(VmStack* stack, unsigned long long argc, Variant* result);

void void_stackcall_error(VmStack* stack, unsigned long long argc);
void void_stackcall_assert(VmStack* stack, unsigned long long argc);
void void_stackcall_throw(VmStack* stack, unsigned long long argc);

}  // namespace zobase
