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

// Text, numbers and dates: their formats, the formatting SET commands and set().
void stackcall_acharset(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_bintoc(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_cdow(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_charset(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_cmonth(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_cpconvert(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_cpcurrent(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_createbinary(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_date(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_datetime(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_day(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_detectcharset(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_dow(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_dtoc(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_dtos(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_dtot(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_fv(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_hash(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_hour(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_julian(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_mime_ttoc(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_minute(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_month(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_payment(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_proper(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_rand(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_scale(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_sec(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_seconds(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_set(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_srand(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_str(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_time(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_transform(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_ttoc(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_ttod(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_type(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_umatch(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_ureplace(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_val(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_year(VmStack* stack, unsigned long long argc, Variant* result);
void void_stackcall_set_century_to(VmStack* stack, unsigned long long argc);
void void_stackcall_set_date_to(VmStack* stack, unsigned long long argc);
void void_stackcall_set_fdow_to(VmStack* stack, unsigned long long argc);
void void_stackcall_set_hours_to(VmStack* stack, unsigned long long argc);
void void_stackcall_set_point_to(VmStack* stack, unsigned long long argc);
void void_stackcall_set_seconds_to(VmStack* stack, unsigned long long argc);
void void_stackcall_set_separator_to(VmStack* stack, unsigned long long argc);
void void_stackcall_set_sysformats_to(VmStack* stack, unsigned long long argc);
// SET DECIMALS TO, a flag of the set command.
void set_decimals(VmStack* stack, const Variant& value);

}  // namespace zobase
