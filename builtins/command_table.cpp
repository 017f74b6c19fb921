#include "builtins/handlers.h"
#include "builtins/library.h"

namespace zobase {

const library_command_row_st core_command_rows[] = {
    {"add_columns", "CI|.?+", void_stackcall_add_columns},  // structure changes,
    {"append", "IC?", void_stackcall_append},
    {"assert", "LC", void_stackcall_assert},
    {"browse", "", command_not_available<"browse">},
    {"begin_transaction", "", void_stackcall_begin_transaction},
    {"cancel", "", void_stackcall_cancel},
    {"cd", "C", void_stackcall_cd},
    {"clear", "", command_not_available<"clear">},
    {"continue", "", void_stackcall_continue},
    {"copy_to", "CIC?C?.?.?|C+", void_stackcall_copy_to},  // structure changes,
    {"create_table", "ICI?C?I|.?+", void_stackcall_create_table},
    {"declare", "CCIC|C?C+", void_stackcall_declare},
    {"delete_all_tags", "", void_stackcall_delete_all_tags},  // indexes
    {"delete_file", "C", void_stackcall_delete_file},
    {"delete_record", "", void_stackcall_delete_record},
    {"delete_tag", "C", void_stackcall_delete_tag},  // indexes
    {"display_structure", "", void_stackcall_display_structure},
    {"drop_columns", "CC+", void_stackcall_drop_columns},  // structure changes,
    {"do", "CC?.?|.?$+", void_stackcall_do},
    {"drop_table", "C", void_stackcall_drop_table},
    {"echo", "|.?+", void_stackcall_echo},
    {"echo_linefeed", "|.?+", void_stackcall_echo_linefeed},
    {"end_transaction", "", void_stackcall_end_transaction},
    {"error", "..?", void_stackcall_error},
    {"gather_from", "IA", void_stackcall_gather_from},
    {"gather_memvar", "I", void_stackcall_gather_memvar},
    {"gather_name", "IO", void_stackcall_gather_name},
    {"go_bottom", "I.?", void_stackcall_go_bottom},
    {"go_record", ".?I", void_stackcall_go_record},
    {"go_top", "I.?", void_stackcall_go_top},
    {"index", "ICCC?C?", void_stackcall_index},  // indexes
    {"locate", "CC?I", void_stackcall_locate},
    {"mkdir", "C", void_stackcall_mkdir},
    {"modify_command", "C", command_not_available<"modify_command">},
    {"pack", "", void_stackcall_pack},  // structure changes,
    {"private", "CC", void_stackcall_private},
    {"quit", "", void_stackcall_quit},
    {"recall_record", "", void_stackcall_recall_record},
    {"reindex", "", void_stackcall_reindex},  // indexes
    {"rename_table", "CC", void_stackcall_rename_table},  // structure changes,
    {"replace", "C.?.?", void_stackcall_replace},
    {"rollback", "", void_stackcall_rollback},
    {"run", "C", void_stackcall_run},
    {"scatter_memvar", "I", void_stackcall_scatter_memvar},
    {"scatter_name", "I.@*", void_stackcall_scatter_name},
    {"scatter_to", "I.@*", void_stackcall_scatter_to},
    {"seek", "I.?.?I?L?", void_stackcall_seek},  // indexes
    {"select", ".", void_stackcall_select},
    {"set", "I.", void_stackcall_set},
    {"set_century_to", "L", void_stackcall_set_century_to},
    {"set_datasession_to", "I?", void_stackcall_set_datasession_to},
    {"set_date_to", "C", void_stackcall_set_date_to},
    {"set_fdow_to", "I", void_stackcall_set_fdow_to},
    {"set_filter_to", "C?.?", void_stackcall_set_filter_to},
    {"set_hours_to", "I", void_stackcall_set_hours_to},
    {"set_library_to", "I|C+", void_stackcall_set_library_to},
    {"release_library", "C", void_stackcall_release_library},  // native extensions
    {"clear_dlls", "|C+", void_stackcall_clear_dlls},         // native extensions
    {"set_order_to", "C?.?I", void_stackcall_set_order_to},
    {"set_key_to", ".?.?.?.?", void_stackcall_set_key_to},  // indexes
    {"set_path_to", "I|C+", void_stackcall_set_path_to},
    {"set_point_to", "C", void_stackcall_set_point_to},
    {"set_procedure_to", "I|C+", void_stackcall_set_procedure_to},
    {"set_seconds_to", "L", void_stackcall_set_seconds_to},
    {"set_separator_to", "C", void_stackcall_set_separator_to},
    {"set_sysformats_to", "L", void_stackcall_set_sysformats_to},
    {"set_textmerge_to", "IC?.?", void_stackcall_set_textmerge_to},
    {"skip", "I?.?", void_stackcall_skip},
    {"textmerge", "|.?+", void_stackcall_textmerge},
    {"throw", ".", void_stackcall_throw},
    {"unlock", "II?.?", void_stackcall_unlock},
    {"use", "IC?.?C?C?", void_stackcall_use},
    {"wait", "IC?I?", void_stackcall_wait},
    {"zap", "", void_stackcall_zap},  // structure changes,
    {nullptr, nullptr, nullptr},
};

}  // namespace zobase
