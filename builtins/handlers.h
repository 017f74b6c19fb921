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
// Native extensions: SET LIBRARY, DECLARE, and DO of a library's command
// (false when no listed library has a command of that name).
void void_stackcall_set_library_to(VmStack* stack, unsigned long long argc);
void void_stackcall_declare(VmStack* stack, unsigned long long argc);
void void_stackcall_release_library(VmStack* stack, unsigned long long argc);
void void_stackcall_clear_dlls(VmStack* stack, unsigned long long argc);
bool run_extension_command(VmStack* stack, const String& name, unsigned long long argc);

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

// Arrays.
void stackcall_acopy(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_adel(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_aelement(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_aenv(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_alen(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_alines(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_array(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_ascan(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_asort(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_asubscript(VmStack* stack, unsigned long long argc, Variant* result);

// Files, folders and file names.
void stackcall_addbs(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_defaultext(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_forceext(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_forcepath(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_justext(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_justfname(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_justpath(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_juststem(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_adir(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_curdir(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_directory(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_fdate(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_file(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_filetostr(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_ftime(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_strtofile(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_fclose(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_feof(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_ferror(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_fgets(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_fopen(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_fread(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_fseek(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_ftell(VmStack* stack, unsigned long long argc, Variant* result);

// The process, the programs it runs, and what a program knows of itself.
void stackcall_getenv(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_setenv(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_unsetenv(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_os(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_sleep(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_exec(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_system(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_escapearg(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_parseargs(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_userhomedir(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_curexe(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_version(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_sigabort(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_messagebox(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_program(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_pcount(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_parameters(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_astackinfo(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_execscript(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_sys(VmStack* stack, unsigned long long argc, Variant* result);
void void_stackcall_run(VmStack* stack, unsigned long long argc);

// Output buffering.
void stackcall_ob_start(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_ob_get_content(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_ob_end_clean(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_ob_end_flush(VmStack* stack, unsigned long long argc, Variant* result);

// JSON.
void stackcall_json_encode(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_json_decode(VmStack* stack, unsigned long long argc, Variant* result);

// HTTP, HTML and MIME helpers.
void stackcall_http_urlencode(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_http_urldecode(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_http_parsequery(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_http_header(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_html_escape(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_mime_header(VmStack* stack, unsigned long long argc, Variant* result);
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
// Records, work areas and data sessions: the table commands and functions.
void void_stackcall_use(VmStack* stack, unsigned long long argc);
void void_stackcall_select(VmStack* stack, unsigned long long argc);
void void_stackcall_go_top(VmStack* stack, unsigned long long argc);
void void_stackcall_go_bottom(VmStack* stack, unsigned long long argc);
void void_stackcall_go_record(VmStack* stack, unsigned long long argc);
void void_stackcall_skip(VmStack* stack, unsigned long long argc);
void void_stackcall_append(VmStack* stack, unsigned long long argc);
void void_stackcall_replace(VmStack* stack, unsigned long long argc);
void void_stackcall_delete_record(VmStack* stack, unsigned long long argc);
void void_stackcall_recall_record(VmStack* stack, unsigned long long argc);
void void_stackcall_locate(VmStack* stack, unsigned long long argc);
void void_stackcall_continue(VmStack* stack, unsigned long long argc);
void void_stackcall_unlock(VmStack* stack, unsigned long long argc);
void void_stackcall_set_filter_to(VmStack* stack, unsigned long long argc);
void void_stackcall_set_datasession_to(VmStack* stack, unsigned long long argc);
void void_stackcall_create_table(VmStack* stack, unsigned long long argc);
void void_stackcall_drop_table(VmStack* stack, unsigned long long argc);
void void_stackcall_display_structure(VmStack* stack, unsigned long long argc);
void void_stackcall_scatter_to(VmStack* stack, unsigned long long argc);
void void_stackcall_scatter_memvar(VmStack* stack, unsigned long long argc);
void void_stackcall_scatter_name(VmStack* stack, unsigned long long argc);
void void_stackcall_gather_from(VmStack* stack, unsigned long long argc);
void void_stackcall_gather_memvar(VmStack* stack, unsigned long long argc);
void void_stackcall_gather_name(VmStack* stack, unsigned long long argc);
void void_stackcall_cd(VmStack* stack, unsigned long long argc);
void void_stackcall_mkdir(VmStack* stack, unsigned long long argc);
void void_stackcall_delete_file(VmStack* stack, unsigned long long argc);
void void_stackcall_wait(VmStack* stack, unsigned long long argc);
void void_stackcall_begin_transaction(VmStack* stack, unsigned long long argc);
void void_stackcall_end_transaction(VmStack* stack, unsigned long long argc);
void void_stackcall_rollback(VmStack* stack, unsigned long long argc);
void stackcall_alias(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_used(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_select(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_recno(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_reccount(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_eof(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_bof(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_deleted(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_found(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_dbf(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_lock(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_isrlocked(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_lupdate(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_cursorgetprop(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_cursorsetprop(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_afields(VmStack* stack, unsigned long long argc, Variant* result);
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

// SQL pass-through (builtins/sql_functions.cpp)
void stackcall_asqlhandles(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_sqlconnect(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_sqldisconnect(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_sqlexec(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_sqlgetprop(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_sqlmoreresults(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_sqlprepare(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_sqlsetprop(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_sqlstringconnect(VmStack* stack, unsigned long long argc, Variant* result);
// ---- structure changes (builtins/structure_commands.cpp)
void void_stackcall_pack(VmStack* stack, unsigned long long argc);
void void_stackcall_zap(VmStack* stack, unsigned long long argc);
void void_stackcall_copy_to(VmStack* stack, unsigned long long argc);
void void_stackcall_rename_table(VmStack* stack, unsigned long long argc);
void void_stackcall_add_columns(VmStack* stack, unsigned long long argc);
void void_stackcall_drop_columns(VmStack* stack, unsigned long long argc);
// ---- indexes (builtins/index_commands.cpp)
void void_stackcall_index(VmStack* stack, unsigned long long argc);
void void_stackcall_set_order_to(VmStack* stack, unsigned long long argc);
void void_stackcall_set_key_to(VmStack* stack, unsigned long long argc);
void stackcall_seek(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_tag(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_key(VmStack* stack, unsigned long long argc, Variant* result);
void void_stackcall_seek(VmStack* stack, unsigned long long argc);
void void_stackcall_reindex(VmStack* stack, unsigned long long argc);
void void_stackcall_delete_tag(VmStack* stack, unsigned long long argc);
void void_stackcall_delete_all_tags(VmStack* stack, unsigned long long argc);
void stackcall_order(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_tagno(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_descending(VmStack* stack, unsigned long long argc, Variant* result);
void stackcall_ataginfo(VmStack* stack, unsigned long long argc, Variant* result);

}  // namespace zobase
