#pragma once
// Handlers of the core tables that are built; the rows name them.
#include "vm/vm_op.h"

namespace zobase {

class Variant;
class VmStack;

void stackcall___init_if_from_macro(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall___init_do_while_from_macro(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall___init_scan_from_macro(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_abs(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_acos(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_alltrim(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_asc(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_asin(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_at(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_atan(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_atn2(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_between(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_bitand(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_bitclear(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_bitlshift(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_bitnot(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_bitor(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_bitrshift(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_bitset(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_bittest(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_bitxor(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_ceiling(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_chr(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_chrtran(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_concat(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_dimension(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_cos(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_dtor(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_empty(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_evl(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_evaluate(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_exp(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_floor(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_get_enumerator(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_getwordcount(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_getwordnum(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_iif(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_inlist(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_int(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_isalnum(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_isalpha(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_isdigit(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_isgraph(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_islower(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_isnull(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_isupper(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_left(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_len(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_log(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_log10(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_lower(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_ltrim(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_max(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_min(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_mod(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_mton(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_ntom(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_nvl(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_padl(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_padr(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_pi(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_replicate(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_right(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_round(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_rtod(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_rtrim(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_sin(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_space(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_sqrt(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_store(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_strconv(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_strtran(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_substr(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_tan(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_text(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_upper(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_vartype(VmStack* stack, unsigned long long argc, Variant* result);

void void_stackcall_cancel(VmStack* stack, unsigned long long argc);
void void_stackcall_do(VmStack* stack, unsigned long long argc);
void void_stackcall_echo(VmStack* stack, unsigned long long argc);
void void_stackcall_echo_linefeed(VmStack* stack, unsigned long long argc);
void void_stackcall_set_textmerge_to(VmStack* stack, unsigned long long argc);
void void_stackcall_textmerge(VmStack* stack, unsigned long long argc);
void void_stackcall_private(VmStack* stack, unsigned long long argc);
void void_stackcall_quit(VmStack* stack, unsigned long long argc);
void void_stackcall_set(VmStack* stack, unsigned long long argc);
void void_stackcall_set_path_to(VmStack* stack, unsigned long long argc);
void void_stackcall_set_procedure_to(VmStack* stack, unsigned long long argc);

// System variables: the platform flags read, every other access is 1001.
void sysvar_windows(VmStack* stack, unsigned long long argc, Variant* result);
void sysvar_dos(VmStack* stack, unsigned long long argc, Variant* result);
void sysvar_mac(VmStack* stack, unsigned long long argc, Variant* result);
void sysvar_unix(VmStack* stack, unsigned long long argc, Variant* result);
void sysnoimplrd(VmStack* stack, unsigned long long argc, Variant* result);
void sysnoimplwr(VmStack* stack, unsigned long long argc);

// The error functions and ERROR, ASSERT and THROW.
void stackcall_error(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_message(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_aerror(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_alistallerrors(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_test_asserts_on(VmStack* stack, unsigned long long argc, Variant* result);
void void_stackcall_error(VmStack* stack, unsigned long long argc);
void void_stackcall_assert(VmStack* stack, unsigned long long argc);
void void_stackcall_throw(VmStack* stack, unsigned long long argc);

// Objects and reflection (object_functions.cpp).
void stackcall_addproperty(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_ainstance(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_amembers(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_createobject(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_decrementref(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_dodefault(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_getpem(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_incrementref(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_newobject(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_pemstatus(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_removeproperty(VmStack* stack, unsigned long long argc, Variant* result);

}  // namespace zobase
