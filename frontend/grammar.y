/* The grammar of one logical line. Every keyword is also a name, so the
   language is ambiguous by nature: the GLR parser keeps the readings alive in
   parallel and the %dprec numbers settle them. There are no merge functions:
   two surviving readings without a priority end the parse. */
%glr-parser
%define api.pure
%define api.prefix {kestro}
%locations
%param {zobase::ParseContext* ctx}
%expect 2894
%expect-rr 2398

%code requires {
#include "frontend/syntax_tree.h"
namespace zobase {
struct ParseContext;
class TextPieces;
class MacroPieces;
}
#define KESTROLTYPE zobase::document_location_st
#define KESTROLTYPE_IS_DECLARED 1
}

%code {
#include "frontend/parser.h"
using namespace zobase;

// A rule's location spans its first to its last symbol; an empty rule sits at
// the end of what came before.
#define YYLLOC_DEFAULT(Cur, Rhs, N)                              \
    do {                                                         \
        if (N) {                                                 \
            (Cur).start = YYRHSLOC(Rhs, 1).start;                \
            (Cur).end = YYRHSLOC(Rhs, N).end;                    \
        } else {                                                 \
            (Cur).start = (Cur).end = YYRHSLOC(Rhs, 0).end;      \
        }                                                        \
    } while (0)

static int kestrolex(KESTROSTYPE* value, KESTROLTYPE* location, ParseContext* ctx) {
    return grammar_next_token(ctx, value->tok, *location);
}
static void kestroerror(KESTROLTYPE* location, ParseContext* ctx, const char* message) {
    grammar_report_error(ctx, *location, message);
}

#define CMD(type) new BasicCommand(type)
#define FLAG(key, loc) grammar_option(key, nullptr, loc)
#define OPT(key, value, loc) grammar_option(key, value, loc)
#define PUSH(cmd, option) grammar_push(ctx, cmd, option)
#define NAME_STR(tok) String::create_from_scan_string(tok)
}

%union {
    zobase::Statement* stmt;
    zobase::BasicCommand* cmd;
    zobase::Operand* opd;
    zobase::Operand_Variable* var;
    zobase::Path* path;
    zobase::PathItem* item;
    zobase::OperandList* list;
    zobase::TextPieces* text;
    zobase::MacroPieces* macro;
    zobase::Option* opt;
    zobase::Stmt_Declaration* decl;
    zobase::declared_variable_st* dv;
    zobase::type_clause_st* tclause;
    zobase::column_st* col;
    zobase::Stmt_Table* table;
    zobase::declare_param_st* dparam;
    zobase::Stmt_Declare* declare;
    const char* cstr;
    long long num;
    zobase::scan_string_st tok;
    zobase::scan_string_list_st* pieces;
}

%destructor { delete $$; } <stmt> <cmd> <opd> <var> <path> <item> <list> <text> <macro> <opt> <decl> <dv> <tclause> <col> <table> <dparam> <declare> <pieces>

%token END_OF_RANGE 0 "end of range"
%token <tok> OTHER_CHAR 258
%token START_STATEMENT 259 START_MACRO 260 START_TEXT 261 START_EXPRESSION 262 START_OPERAND 263
%token <tok> K_ADD 264
%token <tok> K_ADDITIVE 265
%token <tok> K_AFTER 266
%token <tok> K_AND 267
%token <tok> K_AGAIN 268
%token <tok> K_ALIAS 269
%token <tok> K_ALL 270
%token <tok> K_ALTER 271
%token <tok> K_APPEND 272
%token <tok> K_ARRAY 273
%token <tok> K_AS 274
%token <tok> K_ASCENDING 275
%token <tok> K_ASSERT 276
%token <tok> K_ASSERTS 277
%token <tok> K_AT 278
%token <tok> K_AUTOINC 279
%token <tok> K_B 280
%token <tok> K_BEGIN 281
%token <tok> K_BINARY 282
%token <tok> K_BOTTOM 283
%token <tok> K_BLANK 284
%token <tok> K_BLOB 285
%token <tok> K_BLOCKSIZE 286
%token <tok> K_BROWSE 287
%token <tok> K_C 288
%token <tok> K_CANCEL 289
%token <tok> K_CANDIDATE 290
%token <tok> K_CASE 291
%token <tok> K_CAST 292
%token <tok> K_CATCH 293
%token <tok> K_CD 294
%token <tok> K_CDX 295
%token <tok> K_CENTURY 296
%token <tok> K_CHAR 297
%token <tok> K_COMPACT 298
%token <tok> K_CODEPAGE 299
%token <tok> K_COLLATE 300
%token <tok> K_COLUMN 301
%token <tok> K_COMMAND 302
%token <tok> K_CONTINUE 303
%token <tok> K_COPY 304
%token <tok> K_CLASS 305
%token <tok> K_CLEAR 306
%token <tok> K_CLS 307
%token <tok> K_CREATE 308
%token <tok> K_CURSOR 309
%token <tok> K_CURRENCY 310
%token <tok> K_D 311
%token <tok> K_DATASESSION 312
%token <tok> K_DATE 313
%token <tok> K_DATETIME 314
%token <tok> K_DECIMALS 315
%token <tok> K_DEFINE 316
%token <tok> K_DELETE 317
%token <tok> K_DELETED 318
%token <tok> K_DESCENDING 319
%token <tok> K_DIMENSION 320
%token <tok> K_DISPLAY 321
%token <tok> K_DECLARE 322
%token <tok> K_DO 323
%token <tok> K_DOUBLE 324
%token <tok> K_DROP 325
%token <tok> K_EACH 326
%token <tok> K_ELSE 327
%token <tok> K_END 328
%token <tok> K_ENDCASE 329
%token <tok> K_ENDDEFINE 330
%token <tok> K_ENDDO 331
%token <tok> K_ENDFOR 332
%token <tok> K_ENDFUNC 333
%token <tok> K_ENDIF 334
%token <tok> K_ENDPROC 335
%token <tok> K_ENDSCAN 336
%token <tok> K_ENDTEXT 337
%token <tok> K_ENDTRY 338
%token <tok> K_ENDWITH 339
%token <tok> K_ENGINE 340
%token <tok> K_ERROR 341
%token <tok> K_EQUAL 342
%token <tok> K_EXACT 343
%token <tok> K_EXCEPT 344
%token <tok> K_EXCLUSIVE 345
%token <tok> K_EXIT 346
%token <tok> K_EXTERNAL 347
%token <tok> K_F 348
%token <tok> K_FALSE 349
%token <tok> K_FDOW 350
%token <tok> K_FINALLY 351
%token <tok> K_FIND 352
%token <tok> K_FILE 353
%token <tok> K_FILTER 354
%token <tok> K_FLAGS 355
%token <tok> K_FLOAT 356
%token <tok> K_KESOBJECT 357
%token <tok> K_FROM 358
%token <tok> K_FUNCTION 359
%token <tok> K_FOR 360
%token <tok> K_G 361
%token <tok> K_GATHER 362
%token <tok> K_GENERAL 363
%token <tok> K_GO 364
%token <tok> K_GOTO 365
%token <tok> K_GREATER 366
%token <tok> K_HIDDEN 367
%token <tok> K_HOURS 368
%token <tok> K_I 369
%token <tok> K_IF 370
%token <tok> K_IFDEF 371
%token <tok> K_IFNDEF 372
%token <tok> K_IMPORT 373
%token <tok> K_IMPORTS 374
%token <tok> K_IN 375
%token <tok> K_INCLUDE 376
%token <tok> K_INDEX 377
%token <tok> K_INTEGER 378
%token <tok> K_KEY 379
%token <tok> K_L 380
%token <tok> K_LIBRARY 381
%token <tok> K_LIKE 382
%token <tok> K_LOCAL 383
%token <tok> K_LOCATE 384
%token <tok> K_LOGICAL 385
%token <tok> K_LOOP 386
%token <tok> K_LONG 387
%token <tok> K_LPARAMETERS 388
%token <tok> K_M 389
%token <tok> K_MEMO 390
%token <tok> K_MEMVAR 391
%token <tok> K_MKDIR 392
%token <tok> K_MODIFY 393
%token <tok> K_N 394
%token <tok> K_NAME 395
%token <tok> K_NEAR 396
%token <tok> K_NEXT 397
%token <tok> K_NEXTVALUE 398
%token <tok> K_NOCPTRANS 399
%token <tok> K_NOT 400
%token <tok> K_NOTE 401
%token <tok> K_NOMENU 402
%token <tok> K_NOOPTIMIZE 403
%token <tok> K_NOSHOW 404
%token <tok> K_NOUPDATE 405
%token <tok> K_NOWAIT 406
%token <tok> K_NULL 407
%token <tok> K_NUMERIC 408
%token <tok> K_OBJECT 409
%token <tok> K_OF 410
%token <tok> K_OFF 411
%token <tok> K_OLEPUBLIC 412
%token <tok> K_ON 413
%token <tok> K_OR 414
%token <tok> K_ORDER 415
%token <tok> K_OTHERWISE 416
%token <tok> K_PACK 417
%token <tok> K_PATH 418
%token <tok> K_PARAMETERS 419
%token <tok> K_POINT 420
%token <tok> K_PRAGMA 421
%token <tok> K_PREFIX 422
%token <tok> K_PRETEXT 423
%token <tok> K_PRIVATE 424
%token <tok> K_PROCEDURE 425
%token <tok> K_PROTECTED 426
%token <tok> K_PUBLIC 427
%token <tok> K_Q 428
%token <tok> K_QUIT 429
%token <tok> K_RECALL 430
%token <tok> K_RECORD 431
%token <tok> K_REINDEX 432
%token <tok> K_RENAME 433
%token <tok> K_REPLACE 434
%token <tok> K_REST 435
%token <tok> K_RETURN 436
%token <tok> K_ROLLBACK 437
%token <tok> K_RUN 438
%token <tok> K_SAME 439
%token <tok> K_SCAN 440
%token <tok> K_SCATTER 441
%token <tok> K_SECONDS 442
%token <tok> K_SEPARATOR 443
%token <tok> K_SELECT 444
%token <tok> K_SEEK 445
%token <tok> K_SET 446
%token <tok> K_SINGLE 447
%token <tok> K_SKIP 448
%token <tok> K_STEP 449
%token <tok> K_STORE 450
%token <tok> K_STRING 451
%token <tok> K_STRUCTURE 452
%token <tok> K_SHARED 453
%token <tok> K_SHORT 454
%token <tok> K_SHOW 455
%token <tok> K_SPACE 456
%token <tok> K_SUSPEND 457
%token <tok> K_SYSFORMATS 458
%token <tok> K_T 459
%token <tok> K_TABLE 460
%token <tok> K_TAG 461
%token <tok> K_TEXT 462
%token <tok> K_TEXTMERGE 463
%token <tok> K_THEN 464
%token <tok> K_THIS 465
%token <tok> K_THISFORM 466
%token <tok> K_TIMEOUT 467
%token <tok> K_TO 468
%token <tok> K_TOP 469
%token <tok> K_TRY 470
%token <tok> K_TRANSACTION 471
%token <tok> K_TRUE 472
%token <tok> K_THROW 473
%token <tok> K_U 474
%token <tok> K_U8 475
%token <tok> K_U16 476
%token <tok> K_U32 477
%token <tok> K_USE 478
%token <tok> K_UNDEF 479
%token <tok> K_UNICODE 480
%token <tok> K_UNIQUE 481
%token <tok> K_UNLOCK 482
%token <tok> K_V 483
%token <tok> K_VALUE 484
%token <tok> K_VARBINARY 485
%token <tok> K_VARCHAR 486
%token <tok> K_W 487
%token <tok> K_WAIT 488
%token <tok> K_WHEN 489
%token <tok> K_WHILE 490
%token <tok> K_WITH 491
%token <tok> K_WINDOW 492
%token <tok> K_Y 493
%token <tok> K_ZAP 494
%token <tok> K_DLLS 495
%token <tok> K_RELEASE 496
%token <tok> K_FIELDS 497
%token <tok> K_RESERVED 498
%token <tok> HEX_BINARY 499 HEX_INTEGER 500 WORD 501 DIGITS 502
%token <tok> '\n' ' ' '!' '"' '#' '$' '%' '&' '\'' '(' ')' '*' '+' ',' '-' '.' '/' ':' ';' '<' '=' '>' '?' '@' '[' '\\' ']' '^' '{' '}'

%type <stmt> line statement closing_line
%type <cmd> append_options go_target top_options bottom_options gather_from_options gather_name_options
%type <cmd> gather_memvar_options scatter_to_options scatter_name_options scatter_memvar_options text_options
%type <cmd> key_range scan_options seek_options order_options copy_options do_options filter_options index_options
%type <cmd> locate_options foreach_items use_options unlock_options skip_arguments set_text_options
%type <cmd> table_options opt_table_options
%type <opt> in_clause codepage_option engine_option go_record table_option text_option bottom_option top_option
%type <opt> gather_from_option gather_name_option gather_memvar_option scatter_to_option scatter_name_option
%type <opt> scatter_memvar_option scan_option seek_option order_option copy_option do_option filter_option
%type <list> copy_field_list
%type <opt> index_option locate_option append_option foreach_item use_option unlock_option set_text_option
%type <opd> expression or_level and_level not_level relation_level additive_level multiplicative_level
%type <opd> power_level operand call literal integer_literal numeric_literal money_literal logical_literal
%type <opd> null_literal string_literal binary_literal date_literal datetime_literal blank_date blank_datetime
%type <opd> bracket_element paren_element assign_target argument on_off opt_step name_expression file_expression
%type <opd> field_expression
%type <var> variable
%type <path> path member_tail index_tail
%type <item> path_root path_root_index path_root_call member member_index member_call
%type <list> expression_list expression_items argument_list argument_items assign_list assign_items
%type <list> file_items file_list index_suffix
%type <text> raw_text opt_raw_text file_text dotted_name single_text double_text bracket_text quoted_string
%type <tok> name keyword keyword_name member_name text_token raw_token file_token this_word
%type <tok> single_text_token double_text_token bracket_text_token and_word or_word not_word member_op
%type <num> function_head function_word opt_kesobject opt_olepublic column_type_plain column_type_sized
%type <num> column_type_scaled
%type <opt> column_option
%type <cmd> column_options opt_column_options
%type <num> unsigned_integer negative_integer
%type <pieces> digits decimal_digits money_digits numeric_digits
%type <decl> parameter_list local_list sized_list private_list hidden_list protected_list dimension_list
%type <dv> typed_variable sized_variable local_item dimension_item path_element
%type <tclause> type_clause opt_type of_clause
%type <col> column
%type <table> column_list
%type <macro> macro_pieces macro_line
%type <dparam> declare_param
%type <declare> declare_params declare_param_list
%type <cstr> declare_type opt_declare_type

%%

start:
    START_STATEMENT line                          { grammar_statement(ctx, $2, @2); }
  | START_TEXT endl %dprec 1                      { grammar_statement(ctx, new Stmt_Text(STMT_TEXT_LINE, String()), @$); }
  | START_TEXT raw_text endl %dprec 2             { grammar_statement(ctx, new Stmt_Text(STMT_TEXT_LINE, grammar_join($2), @2.start), @$); delete $2; }
  | START_TEXT K_ENDTEXT opt_raw_text endl %dprec 3 { delete $3; grammar_statement(ctx, new Statement(STMT_ENDTEXT), @$); }
  | START_MACRO macro_line endl %dprec 1          { grammar_statement(ctx, grammar_macro_statement(ctx, STMT_INCOMPLETE, $2, @2), @$); }
  | START_MACRO K_IF macro_line endl %dprec 2     { grammar_statement(ctx, grammar_macro_statement(ctx, STMT_IF, $3, @3), @$); }
  | START_MACRO K_DO ws K_WHILE macro_line endl %dprec 2 { grammar_statement(ctx, grammar_macro_statement(ctx, STMT_DO_WHILE, $5, @5), @$); }
  | START_MACRO K_SCAN macro_line endl %dprec 2   { grammar_statement(ctx, grammar_macro_statement(ctx, STMT_SCAN, $3, @3), @$); }
  | START_EXPRESSION ws expression ws             { grammar_operand(ctx, $3, @3); }
  | START_OPERAND ws operand ws                   { grammar_operand(ctx, $3, @3); }
  ;

line:
    statement %dprec 3                            { $$ = $1; $$->location = @$; }
  | call eol %dprec 2                             { $$ = new Stmt_Assign(nullptr, $1); $$->location = @$; }
  | path eol %dprec 2                             { $$ = new Stmt_Assign(nullptr, $1); $$->location = @$; }
  | closing_line %dprec 1                         { $$ = $1; $$->location = @$; }
  ;

closing_line:
    K_ELSE opt_raw_text endl                      { delete $2; $$ = new Statement(STMT_ELSE); }
  | K_ENDDO opt_raw_text endl                     { delete $2; $$ = CMD(STMT_ENDDO); }
  | K_ENDFOR opt_raw_text endl                    { delete $2; $$ = new Statement(STMT_ENDFOR); }
  | K_ENDIF opt_raw_text endl                     { delete $2; $$ = new Statement(STMT_ENDIF); }
  | K_ENDSCAN opt_raw_text endl                   { delete $2; $$ = CMD(STMT_ENDSCAN); }
  | K_EXIT opt_raw_text endl                      { delete $2; $$ = new Statement(STMT_EXIT); }
  | K_LOOP opt_raw_text endl                      { delete $2; $$ = new Statement(STMT_LOOP); }
  | K_NEXT opt_raw_text endl                      { delete $2; $$ = new Statement(STMT_ENDFOR); }
  | K_NOTE raw_text endl                          { $$ = new Stmt_Text(STMT_DUMMY, grammar_join($2)); delete $2; }
  | K_QUIT opt_raw_text endl                      { delete $2; $$ = CMD(STMT_QUIT); }
  ;

statement:
    '=' ws expression eol                         { $$ = new Stmt_Assign(nullptr, $3); }
  | '?' eol                                       { $$ = new Stmt_Echo(true, nullptr); }
  | '?' ws expression_list eol                    { $$ = new Stmt_Echo(true, $3); }
  | '?' '?' eol                                   { $$ = new Stmt_Echo(false, nullptr); }
  | '?' '?' ws expression_list eol                { $$ = new Stmt_Echo(false, $4); }
  | '\\' endl                                     { $$ = new Stmt_Text(STMT_TEXTMERGE, String()); }
  | '\\' '\\' endl %dprec 2                       { auto* s = new Stmt_Text(STMT_TEXTMERGE, String()); s->no_linefeed = true; $$ = s; }
  | '\\' raw_text endl %dprec 1                   { $$ = new Stmt_Text(STMT_TEXTMERGE, grammar_join($2), @2.start); delete $2; }
  | '\\' '\\' raw_text endl %dprec 2              { auto* s = new Stmt_Text(STMT_TEXTMERGE, grammar_join($3), @3.start); s->no_linefeed = true; delete $3; $$ = s; }
  | K_ALTER ws K_TABLE ws file_expression ws K_ADD ws K_COLUMN ws column eol
        { auto* t = new Stmt_Table(STMT_ADD_COLUMN); t->table.reset($5); t->columns.emplace_back($11); $$ = t; }
  | K_ALTER ws K_TABLE ws file_expression ws K_DROP ws K_COLUMN ws name_expression eol
        { auto* t = new Stmt_Table(STMT_DROP_COLUMN); t->table.reset($5); t->drop_column.reset($11); $$ = t; }
  | K_APPEND ws append_options eol                { $$ = $3; $$->type = STMT_APPEND; }
  | K_ASSERT ws expression eol
        { auto* c = CMD(STMT_ASSERT); PUSH(c, OPT("EXPR", $3, @3));
          PUSH(c, OPT("EXPRTEXT", new Const_String(grammar_source_text(ctx, @3)), @3)); $$ = c; }
  | K_BEGIN ws K_TRANSACTION eol                  { $$ = CMD(STMT_BEGIN_TRANSACTION); }
  | K_BROWSE eol                                  { $$ = CMD(STMT_BROWSE); }
  | K_CANCEL eol                                  { $$ = CMD(STMT_CANCEL); }
  | K_DEFINE ws K_CLASS ws name ws type_clause opt_olepublic eol
        { auto* d = new Stmt_DefineClass(); d->name = NAME_STR($5); d->parent = std::move(*$7); delete $7;
          d->olepublic = $8; $$ = d; }
  | K_DELETE ws K_TAG ws name_expression eol %dprec 1 { auto* c = CMD(STMT_DELETE_TAG); PUSH(c, OPT("TAG", $5, @5)); $$ = c; }
  | K_DELETE ws K_TAG ws K_ALL eol %dprec 2       { $$ = CMD(STMT_DELETE_ALL_TAGS); }
  | K_END ws K_TRANSACTION eol                    { $$ = CMD(STMT_END_TRANSACTION); }
  | K_ENDDEFINE eol                               { $$ = new Statement(STMT_ENDDEFINE); }
  | K_ENDFUNC eol                                 { $$ = new Statement(STMT_ENDFUNC); }
  | K_ENDPROC eol                                 { $$ = new Statement(STMT_ENDFUNC); }
  | K_ENDWITH eol                                 { $$ = CMD(STMT_ENDWITH); }
  | K_ERROR ws expression ws ',' ws expression eol
        { auto* c = CMD(STMT_ERROR); PUSH(c, OPT("CODE", $3, @3)); PUSH(c, OPT("MESSAGE", $7, @7)); $$ = c; }
  | K_ERROR ws expression eol                     { auto* c = CMD(STMT_ERROR); PUSH(c, OPT("CODE", $3, @3)); $$ = c; }
  | K_FOR ws variable ws '=' ws expression ws K_TO ws expression opt_step eol
        { auto* f = new Stmt_For(); f->variable.reset($3); f->from.reset($7); f->to.reset($11); f->step.reset($12); $$ = f; }
  | K_FOR ws K_EACH ws variable ws K_IN ws expression opt_kesobject eol
        { auto* c = CMD(STMT_FOR_EACH); PUSH(c, OPT("VALUE", $5, @5)); PUSH(c, OPT("IN", $9, @9));
          if ($10) PUSH(c, FLAG("KESOBJECT", @10)); $$ = c; }
  | K_FOR ws K_EACH ws foreach_items ws K_IN ws expression opt_kesobject eol
        { auto* c = $5; c->type = STMT_FOR_EACH; PUSH(c, OPT("IN", $9, @9));
          if ($10) PUSH(c, FLAG("KESOBJECT", @10)); $$ = c; }
  | function_head ws name opt_type eol            { $$ = grammar_function($1, $3, nullptr, $4); }
  | function_head ws name ws '(' ws ')' opt_type eol { $$ = grammar_function($1, $3, new Stmt_Declaration(STMT_PARAMETERS), $8); }
  | function_head ws name ws '(' ws parameter_list ws ')' opt_type eol { $$ = grammar_function($1, $3, $7, $10); }
  | K_LPARAMETERS ws parameter_list eol           { $$ = $3; $3->type = STMT_LPARAMETERS; }
  | assign_target ws '=' ws expression eol        { $$ = new Stmt_Assign($1, $5); }
  | K_MODIFY ws K_COMMAND ws file_expression eol  { auto* c = CMD(STMT_MODIFY_COMMAND); PUSH(c, OPT("FILENAME", $5, @5)); $$ = c; }
  | K_PARAMETERS ws parameter_list eol            { $$ = $3; $3->type = STMT_PARAMETERS; }
  | K_ROLLBACK eol                                { $$ = CMD(STMT_ROLLBACK); }
  | K_TEXT text_eol                               { $$ = CMD(STMT_TEXT); }
  | K_TEXT ws text_options text_eol               { $$ = $3; $$->type = STMT_TEXT; }
  | K_IF ws expression eol %dprec 1               { $$ = new Stmt_Condition(STMT_IF, $3); }
  | K_IF ws expression ws K_THEN eol %dprec 2     { $$ = new Stmt_Condition(STMT_IF, $3); }
  | K_LOCAL ws local_list eol                     { $$ = $3; $3->type = STMT_LOCAL; }
  | K_LOCAL ws K_ARRAY ws sized_list eol          { $$ = $5; $5->type = STMT_LOCAL; }
  | K_RETURN eol                                  { $$ = new Stmt_Return(grammar_bool(true)); }
  | K_RETURN ws expression eol                    { $$ = new Stmt_Return($3); }
  | K_RETURN ws '@' ws call eol                   { $$ = new Stmt_Return(grammar_at(new Operand_Reference($5), @3, @5)); }
  | K_RETURN ws '@' ws path eol                   { $$ = new Stmt_Return(grammar_at(new Operand_Reference($5), @3, @5)); }
  | K_WITH ' ' expression eol                     { $$ = new Stmt_Condition(STMT_WITH, $3); }
  | K_PUBLIC ws local_list eol                    { $$ = $3; $3->type = STMT_PUBLIC; }
  | K_PRIVATE ws private_list eol %dprec 1        { $$ = $3; $3->type = STMT_PRIVATE; }
  | K_PRIVATE ws K_ALL eol %dprec 2               { $$ = new Stmt_PrivatePattern(String("*"), String()); }
  | K_PRIVATE ws K_ALL ws K_EXCEPT ' ' raw_text endl %dprec 2 { $$ = new Stmt_PrivatePattern(String("*"), grammar_join($7)); delete $7; }
  | K_PRIVATE ws K_ALL ws K_LIKE ' ' raw_text endl %dprec 2   { $$ = new Stmt_PrivatePattern(grammar_join($7), String()); delete $7; }
  | K_HIDDEN ws hidden_list eol                   { $$ = $3; $3->type = STMT_HIDDEN; }
  | K_PROTECTED ws protected_list eol             { $$ = $3; $3->type = STMT_PROTECTED; }
  | K_DIMENSION ws dimension_list eol %dprec 2    { $$ = $3; $3->type = STMT_DIMENSION; }
  | K_SUSPEND eol                                 { $$ = CMD(STMT_SUSPEND); }
  | K_SET ws assert_word ws on_off eol            { $$ = grammar_set(ctx, "ASSERTS", $5, @5); }
  | K_SET ws K_DELETED ws on_off eol              { $$ = grammar_set(ctx, "DELETED", $5, @5); }
  | K_SET ws K_DECIMALS ws K_TO ws expression eol { $$ = grammar_set(ctx, "DECIMALS", $7, @7); }
  | K_SET ws K_BLOCKSIZE ws K_TO ws expression eol { $$ = grammar_set(ctx, "BLOCKSIZE", $7, @7); }
  | K_SET ws K_FILTER ws K_TO eol                 { $$ = CMD(STMT_SET_FILTER_TO); }
  | K_SET ws K_FILTER ws filter_options eol       { $$ = $5; $$->type = STMT_SET_FILTER_TO; }
  | K_SET ws K_STEP ws on_off eol                 { $$ = grammar_set(ctx, "STEP", $5, @5); }
  | K_SET ws K_EXACT ws on_off eol                { $$ = grammar_set(ctx, "EXACT", $5, @5); }
  | K_SET ws K_EXCLUSIVE ws on_off eol            { $$ = grammar_set(ctx, "EXCLUSIVE", $5, @5); }
  | K_SET ws K_NEAR ws on_off eol                 { $$ = grammar_set(ctx, "NEAR", $5, @5); }
  | K_SET ws K_SPACE ws on_off eol                { $$ = grammar_set(ctx, "SPACE", $5, @5); }
  | K_SET ws text_word ws set_text_options eol    { $$ = $5; $$->type = STMT_SET_TEXTMERGE_TO; }
  | K_SET ws K_DATASESSION ws K_TO eol            { $$ = CMD(STMT_SET_DATASESSION_TO); }
  | K_SET ws K_DATASESSION ws K_TO ws expression eol { $$ = grammar_command_to(ctx, STMT_SET_DATASESSION_TO, "TO", $7, @7); }
  | K_USE ' ' file_expression ws use_options eol %dprec 1 { $$ = $5; $5->type = STMT_USE; PUSH($5, OPT("FILENAME", $3, @3)); }
  | K_USE ' ' file_expression eol %dprec 1        { $$ = grammar_command_to(ctx, STMT_USE, "FILENAME", $3, @3); }
  | K_USE ws K_IN ws name_expression eol %dprec 2 { $$ = grammar_command_to(ctx, STMT_USE, "IN", $5, @5); }
  | K_USE eol                                     { $$ = CMD(STMT_USE); }
  | K_SELECT ws name_expression eol               { $$ = grammar_command_to(ctx, STMT_SELECT, "ALIAS", $3, @3); }
  | K_DECLARE ws opt_declare_type name ws K_IN ' ' file_expression declare_params eol
        { auto* d = $9; d->result_type = String($3); d->name = NAME_STR($4); d->library.reset($8); $$ = d; }
  | K_DECLARE ws opt_declare_type name ws K_IN ' ' file_expression ws K_AS ws name declare_params eol
        { auto* d = $13; d->result_type = String($3); d->name = NAME_STR($4); d->library.reset($8);
          d->alias = NAME_STR($12); $$ = d; }
  | K_SKIP eol                                    { $$ = CMD(STMT_SKIP); }
  | K_SKIP ws skip_arguments eol                  { $$ = $3; $$->type = STMT_SKIP; }
  | go_word ws top_options eol %dprec 2           { $$ = $3; $$->type = STMT_GO_TOP; }
  | go_word ws bottom_options eol %dprec 2        { $$ = $3; $$->type = STMT_GO_BOTTOM; }
  | go_word ws go_target eol %dprec 1             { $$ = $3; $$->type = STMT_GO_RECORD; }
  | K_CREATE ws K_CURSOR ws name_expression opt_table_options ws '(' ws column_list ws ')' eol
        { $$ = grammar_create_table(ctx, $10, $5, true, $6); }
  | K_CREATE ws K_TABLE ws file_expression opt_table_options ws '(' ws column_list ws ')' eol
        { $$ = grammar_create_table(ctx, $10, $5, false, $6); }
  | K_PACK eol                                    { $$ = CMD(STMT_PACK); }
  | K_ZAP eol                                     { $$ = CMD(STMT_ZAP); }
  | K_REPLACE ws field_expression ws K_WITH ws expression eol
        { auto* c = CMD(STMT_REPLACE); PUSH(c, OPT("FIELD", $3, @3)); PUSH(c, OPT("VALUE", $7, @7)); $$ = c; }
  | K_REPLACE ws field_expression ws K_WITH ws expression ws K_IN ws name_expression eol
        { auto* c = CMD(STMT_REPLACE); PUSH(c, OPT("FIELD", $3, @3)); PUSH(c, OPT("VALUE", $7, @7));
          PUSH(c, OPT("IN", $11, @11)); $$ = c; }
  | K_SCATTER ws scatter_to_options eol           { $$ = $3; $$->type = STMT_SCATTER_TO; }
  | K_SCATTER ws scatter_memvar_options eol       { $$ = $3; $$->type = STMT_SCATTER_MEMVAR; }
  | K_SCATTER ws scatter_name_options eol         { $$ = $3; $$->type = STMT_SCATTER_NAME; }
  | K_GATHER ws gather_from_options eol           { $$ = $3; $$->type = STMT_GATHER_FROM; }
  | K_GATHER ws gather_memvar_options eol         { $$ = $3; $$->type = STMT_GATHER_MEMVAR; }
  | K_GATHER ws gather_name_options eol           { $$ = $3; $$->type = STMT_GATHER_NAME; }
  | K_DO ws K_WHILE ws expression eol %dprec 3    { $$ = new Stmt_Condition(STMT_DO_WHILE, $5); }
  | K_DO ws K_CASE eol %dprec 2                   { $$ = new Statement(STMT_DO_CASE); }
  | K_DO ' ' file_expression eol %dprec 1         { $$ = grammar_command_to(ctx, STMT_DO, "FILENAME", $3, @3); }
  | K_DO ' ' file_expression ws do_options eol %dprec 1 { $$ = $5; $5->type = STMT_DO; PUSH($5, OPT("FILENAME", $3, @3)); }
  | K_DROP ' ' K_TABLE ' ' file_expression eol    { $$ = grammar_command_to(ctx, STMT_DROP_TABLE, "FILENAME", $5, @5); }
  | K_RENAME ' ' K_TABLE ' ' file_expression ' ' K_TO ' ' file_expression eol
        { auto* c = CMD(STMT_RENAME_TABLE); PUSH(c, OPT("FROM", $5, @5)); PUSH(c, OPT("TO", $9, @9)); $$ = c; }
  | K_CASE ws expression eol                      { $$ = new Stmt_Condition(STMT_CASE, $3); }
  | K_OTHERWISE eol                               { $$ = new Statement(STMT_OTHERWISE); }
  | K_ENDCASE eol                                 { $$ = new Statement(STMT_ENDCASE); }
  | K_TRY eol                                     { $$ = new Statement(STMT_TRY); }
  | K_CATCH eol                                   { auto* c = new Stmt_Catch(); c->when.reset(grammar_bool(true)); $$ = c; }
  | K_CATCH ws K_TO ws variable eol               { auto* c = new Stmt_Catch(); c->variable.reset($5); c->when.reset(grammar_bool(true)); $$ = c; }
  | K_CATCH ws K_TO ws variable ws K_WHEN ws expression eol
        { auto* c = new Stmt_Catch(); c->variable.reset($5); c->when.reset($9); $$ = c; }
  | K_THROW ws expression eol                     { $$ = grammar_command_to(ctx, STMT_THROW, "EXPRESSION", $3, @3); }
  | K_FINALLY eol                                 { $$ = new Statement(STMT_FINALLY); }
  | K_ENDTRY eol                                  { $$ = new Statement(STMT_ENDTRY); }
  | K_SET ws K_LIBRARY ws K_TO ' ' file_list eol  { $$ = grammar_path_list(ctx, STMT_SET_LIBRARY_TO, $7, false, @7); }
  | K_SET ws K_LIBRARY ws K_TO ' ' file_list ws K_ADDITIVE eol { $$ = grammar_path_list(ctx, STMT_SET_LIBRARY_TO, $7, true, @7); }
  | K_SET ws K_LIBRARY ws K_TO eol                { $$ = CMD(STMT_SET_LIBRARY_TO); }
  | K_RELEASE ws K_LIBRARY ' ' file_expression eol { $$ = grammar_command_to(ctx, STMT_RELEASE_LIBRARY, "FILENAME", $5, @5); }
  | clear_word ws K_DLLS eol                      { $$ = CMD(STMT_CLEAR_DLLS); }
  | clear_word ws K_DLLS ' ' file_list eol        { $$ = grammar_path_list(ctx, STMT_CLEAR_DLLS, $5, false, @5); }
  | K_SET ws K_PATH ws K_TO ' ' file_list eol     { $$ = grammar_path_list(ctx, STMT_SET_PATH_TO, $7, false, @7); }
  | K_SET ws K_PATH ws K_TO ' ' file_list ws K_ADDITIVE eol { $$ = grammar_path_list(ctx, STMT_SET_PATH_TO, $7, true, @7); }
  | K_SET ws K_PATH ws K_TO eol                   { $$ = CMD(STMT_SET_PATH_TO); }
  | K_SET ws K_PROCEDURE ws K_TO ' ' file_list eol { $$ = grammar_path_list(ctx, STMT_SET_PROCEDURE_TO, $7, false, @7); }
  | K_SET ws K_PROCEDURE ws K_TO ' ' file_list ws K_ADDITIVE eol { $$ = grammar_path_list(ctx, STMT_SET_PROCEDURE_TO, $7, true, @7); }
  | K_SET ws K_PROCEDURE ws K_TO eol              { $$ = CMD(STMT_SET_PROCEDURE_TO); }
  | K_SET ws K_FDOW ws K_TO ws expression eol     { $$ = grammar_command_to(ctx, STMT_SET_FDOW_TO, "TO", $7, @7); }
  | K_SET ws K_POINT ws K_TO ws expression eol    { $$ = grammar_command_to(ctx, STMT_SET_POINT_TO, "TO", $7, @7); }
  | K_SET ws K_SEPARATOR ws K_TO ws expression eol { $$ = grammar_command_to(ctx, STMT_SET_SEPARATOR_TO, "TO", $7, @7); }
  | K_SET ws K_HOURS ws K_TO ws expression eol    { $$ = grammar_command_to(ctx, STMT_SET_HOURS_TO, "TO", $7, @7); }
  | K_SET ws K_DATE ws K_TO ws name_expression eol { $$ = grammar_command_to(ctx, STMT_SET_DATE_TO, "TO", $7, @7); }
  | K_SET ws K_DATE ws name_expression eol        { $$ = grammar_command_to(ctx, STMT_SET_DATE_TO, "TO", $5, @5); }
  | K_SET ws K_SYSFORMATS ws on_off eol           { $$ = grammar_command_to(ctx, STMT_SET_SYSFORMATS_TO, "TO", $5, @5); }
  | K_SET ws K_SECONDS ws on_off eol              { $$ = grammar_command_to(ctx, STMT_SET_SECONDS_TO, "TO", $5, @5); }
  | K_SET ws K_CENTURY ws on_off eol              { $$ = grammar_command_to(ctx, STMT_SET_CENTURY_TO, "TO", $5, @5); }
  | K_STORE ws expression ws K_TO ws assign_list eol { $$ = new Stmt_Store($3, $7); }
  | K_EXTERNAL ws K_ARRAY ws expression_list eol  { delete $5; $$ = new Statement(STMT_DUMMY); }
  | K_INDEX ws index_options eol                  { $$ = $3; $$->type = STMT_INDEX; }
  | K_LOCATE ws locate_options eol                { $$ = $3; $$->type = STMT_LOCATE; }
  | K_CONTINUE eol                                { $$ = CMD(STMT_CONTINUE); }
  | K_SCAN eol                                    { $$ = CMD(STMT_SCAN); }
  | K_SCAN ws scan_options eol                    { $$ = $3; $$->type = STMT_SCAN; }
  | K_DELETE eol                                  { $$ = CMD(STMT_DELETE_RECORD); }
  | K_RECALL eol                                  { $$ = CMD(STMT_RECALL_RECORD); }
  | K_DELETE ws K_FILE ws '(' ws expression ws ')' eol %dprec 2 { $$ = grammar_command_to(ctx, STMT_DELETE_FILE, "FILENAME", $7, @7); }
  | K_DELETE ws K_FILE ' ' raw_text endl %dprec 1 { $$ = grammar_command_text(ctx, STMT_DELETE_FILE, "FILENAME", $5, @5); }
  | K_RUN ' ' raw_text endl                       { $$ = grammar_command_text(ctx, STMT_RUN, "CMD", $3, @3); }
  | K_UNLOCK eol                                  { $$ = CMD(STMT_UNLOCK); }
  | K_UNLOCK ws unlock_options eol                { $$ = $3; $$->type = STMT_UNLOCK; }
  | '!' ' ' raw_text endl                         { $$ = grammar_command_text(ctx, STMT_RUN, "CMD", $3, @3); }
  | clear_word eol                                { $$ = CMD(STMT_CLEAR); }
  | K_CD ' ' raw_text endl                        { $$ = grammar_command_text(ctx, STMT_CD, "PATH", $3, @3); }
  | K_COPY ws K_TO ' ' file_expression eol        { $$ = grammar_command_to(ctx, STMT_COPY_TO, "FILENAME", $5, @5); }
  | K_COPY ws K_TO ' ' file_expression ws copy_options eol { $$ = $7; $7->type = STMT_COPY_TO; PUSH($7, OPT("FILENAME", $5, @5)); }
  | K_REINDEX eol                                 { $$ = CMD(STMT_REINDEX); }
  | K_SET ws K_ORDER ws K_TO eol                  { $$ = CMD(STMT_SET_ORDER_TO); }
  | K_SET ws K_ORDER ws K_TO ws name_expression eol { $$ = grammar_command_to(ctx, STMT_SET_ORDER_TO, "TAG", $7, @7); }
  | K_SET ws K_ORDER ws K_TO ws name_expression ws order_options eol
        { $$ = $9; $9->type = STMT_SET_ORDER_TO; PUSH($9, OPT("TAG", $7, @7)); }
  | K_SET ws K_ORDER ws K_TO ws order_options eol { $$ = $7; $$->type = STMT_SET_ORDER_TO; }
  | K_SET ws K_KEY ws K_TO eol                    { $$ = CMD(STMT_SET_KEY_TO); }
  | K_SET ws K_KEY ws K_TO ws expression eol %dprec 2 { $$ = grammar_command_to(ctx, STMT_SET_KEY_TO, "TO", $7, @7); }
  | K_SET ws K_KEY ws K_TO ws expression ws in_clause eol %dprec 2
        { BasicCommand* c = grammar_command_to(ctx, STMT_SET_KEY_TO, "TO", $7, @7); PUSH(c, $9); $$ = c; }
  | K_SET ws K_KEY ws K_TO ' ' WORD ws key_range eol %dprec 1 { $$ = grammar_key_range(ctx, $7, @7, $9); }
  | K_SET ws K_KEY ws K_TO ' ' WORD ws key_range ws in_clause eol %dprec 1
        { BasicCommand* c = grammar_key_range(ctx, $7, @7, $9); PUSH(c, $11); $$ = c; }
  | seek_word ws expression eol %dprec 2          { $$ = grammar_command_to(ctx, STMT_SEEK, "EXPRESSION", $3, @3); }
  | seek_word ws expression ws seek_options eol %dprec 2 { $$ = $5; $5->type = STMT_SEEK; PUSH($5, OPT("EXPRESSION", $3, @3)); }
  | K_DISPLAY ws K_STRUCTURE eol                  { $$ = CMD(STMT_DISPLAY_STRUCTURE); }
  | K_IMPORTS ' ' file_expression eol             { $$ = new Stmt_Import($3); }
  | K_MKDIR ' ' file_expression eol               { $$ = grammar_command_to(ctx, STMT_MKDIR, "FILENAME", $3, @3); }
  | K_WAIT eol                                    { $$ = CMD(STMT_WAIT); }
  | '#' K_PRAGMA ws name ws '(' ws argument_list ws ')' eol { $$ = new Stmt_Pragma(NAME_STR($4), $8); }
  ;

function_word: K_FUNCTION { $$ = 0; } | K_PROCEDURE { $$ = 1; } ;
go_word: K_GO | K_GOTO ;
seek_word: K_SEEK | K_FIND ;
text_word: K_TEXT | K_TEXTMERGE ;
assert_word: K_ASSERT | K_ASSERTS ;
clear_word: K_CLEAR | K_CLS ;

function_head:
    function_word                                 { $$ = $1; }
  | K_PROTECTED ws function_word                  { $$ = $3 | (VISIBILITY_PROTECTED << 1); }
  | K_HIDDEN ws function_word                     { $$ = $3 | (VISIBILITY_HIDDEN << 1); }
  ;

opt_kesobject: %empty { $$ = 0; } | ws K_KESOBJECT { $$ = 1; } ;
opt_olepublic: %empty { $$ = 0; } | ws K_OLEPUBLIC { $$ = 1; } ;
opt_raw_text: %empty { $$ = nullptr; } | raw_text { $$ = $1; } ;

macro_pieces:
    '&' name %dprec 4                             { $$ = new MacroPieces(); $$->add('V', $2, @2); }
  | raw_token %dprec 3                            { $$ = new MacroPieces(); $$->add('S', $1, @1); }
  | macro_pieces '&' name %dprec 2                { $$ = $1; $$->add('V', $3, @3); }
  | macro_pieces raw_token %dprec 1               { $$ = $1; $$->add('S', $2, @2); }
  ;
macro_line: macro_pieces { $$ = $1; } ;

/* DECLARE */
declare_params: %empty { $$ = new Stmt_Declare(); } | ws declare_param_list { $$ = $2; } ;
declare_param_list:
    declare_param                                 { $$ = new Stmt_Declare(); $$->parameters.push_back(std::move(*$1)); delete $1; }
  | declare_param ws ',' ws declare_param_list
        { $$ = $5; $$->parameters.insert($$->parameters.begin(), std::move(*$1)); delete $1; }
  ;
declare_param:
    declare_type ws '@' name                      { $$ = grammar_declare_param($1, true, &$4); }
  | declare_type ws name %dprec 1                 { $$ = grammar_declare_param($1, false, &$3); }
  | declare_type %dprec 2                         { $$ = grammar_declare_param($1, false, nullptr); }
  | declare_type ws '@'                           { $$ = grammar_declare_param($1, true, nullptr); }
  ;
opt_declare_type: %empty { $$ = ""; } | declare_type ws { $$ = $1; } ;
declare_type:
    K_SHORT { $$ = "SHORT"; } | K_INTEGER { $$ = "INTEGER"; } | K_LONG { $$ = "LONG"; }
  | K_LONG ws K_LONG { $$ = "LONG LONG"; } | K_SINGLE { $$ = "SINGLE"; } | K_DOUBLE { $$ = "DOUBLE"; }
  | K_STRING { $$ = "STRING"; } | K_BINARY { $$ = "BINARY"; } | K_OBJECT { $$ = "OBJECT"; }
  ;

/* Clauses of the commands; each list collects into a BasicCommand whose type the statement sets. */
in_clause: K_IN ws name_expression { $$ = OPT("IN", $3, @3); } ;
codepage_option: K_CODEPAGE ws '=' ws expression { $$ = OPT("CODEPAGE", $5, @5); } ;
engine_option: K_ENGINE ws '=' ws name_expression { $$ = OPT("ENGINE", $5, @5); } ;
go_record: K_RECORD ws expression %dprec 2 { $$ = OPT("RECORD", $3, @3); } | expression %dprec 1 { $$ = OPT("RECORD", $1, @1); } ;
table_option: codepage_option | engine_option ;
table_options: table_option { $$ = CMD(STMT_INVALID); PUSH($$, $1); } | table_options ws table_option { $$ = $1; PUSH($$, $3); } ;
opt_table_options: %empty { $$ = nullptr; } | ws table_options { $$ = $2; } ;
text_option:
    K_TO ws expression { $$ = OPT("TO", $3, @3); } | K_ADDITIVE { $$ = FLAG("ADDITIVE", @1); }
  | text_word { $$ = FLAG("TEXTMERGE", @1); } | K_NOSHOW { $$ = FLAG("NOSHOW", @1); }
  | K_FLAGS ws expression { $$ = OPT("FLAGS", $3, @3); } | K_PRETEXT ws expression { $$ = OPT("PRETEXT", $3, @3); }
  ;
go_target:
    go_record                                     { $$ = CMD(STMT_INVALID); PUSH($$, $1); }
  | go_record ws in_clause                        { $$ = CMD(STMT_INVALID); PUSH($$, $1); PUSH($$, $3); }
  | in_clause ' ' go_record                       { $$ = CMD(STMT_INVALID); PUSH($$, $1); PUSH($$, $3); }
  ;
bottom_option: K_BOTTOM { $$ = FLAG("BOTTOM", @1); } | in_clause ;
bottom_options: bottom_option { $$ = CMD(STMT_INVALID); PUSH($$, $1); } | bottom_options ws bottom_option { $$ = $1; PUSH($$, $3); } ;
top_option: K_TOP { $$ = FLAG("TOP", @1); } | in_clause ;
top_options: top_option { $$ = CMD(STMT_INVALID); PUSH($$, $1); } | top_options ws top_option { $$ = $1; PUSH($$, $3); } ;
gather_from_option: K_MEMO { $$ = FLAG("MEMO", @1); } | K_FROM ws expression { $$ = OPT("FROM", $3, @3); } ;
gather_from_options: gather_from_option { $$ = CMD(STMT_INVALID); PUSH($$, $1); } | gather_from_options ws gather_from_option { $$ = $1; PUSH($$, $3); } ;
gather_name_option: K_MEMO { $$ = FLAG("MEMO", @1); } | K_NAME ws expression { $$ = OPT("NAME", $3, @3); } ;
gather_name_options: gather_name_option { $$ = CMD(STMT_INVALID); PUSH($$, $1); } | gather_name_options ws gather_name_option { $$ = $1; PUSH($$, $3); } ;
gather_memvar_option: K_MEMO { $$ = FLAG("MEMO", @1); } | K_MEMVAR { $$ = FLAG("MEMVAR", @1); } ;
gather_memvar_options: gather_memvar_option { $$ = CMD(STMT_INVALID); PUSH($$, $1); } | gather_memvar_options ws gather_memvar_option { $$ = $1; PUSH($$, $3); } ;
scatter_to_option: K_BLANK { $$ = FLAG("BLANK", @1); } | K_MEMO { $$ = FLAG("MEMO", @1); } | K_TO ws expression { $$ = OPT("TO", $3, @3); } ;
scatter_to_options: scatter_to_option { $$ = CMD(STMT_INVALID); PUSH($$, $1); } | scatter_to_options ws scatter_to_option { $$ = $1; PUSH($$, $3); } ;
scatter_name_option:
    K_BLANK { $$ = FLAG("BLANK", @1); } | K_MEMO { $$ = FLAG("MEMO", @1); }
  | K_NAME ws expression { $$ = OPT("NAME", $3, @3); } | K_ADDITIVE { $$ = FLAG("ADDITIVE", @1); }
  ;
scatter_name_options: scatter_name_option { $$ = CMD(STMT_INVALID); PUSH($$, $1); } | scatter_name_options ws scatter_name_option { $$ = $1; PUSH($$, $3); } ;
scatter_memvar_option: K_BLANK { $$ = FLAG("BLANK", @1); } | K_MEMO { $$ = FLAG("MEMO", @1); } | K_MEMVAR { $$ = FLAG("MEMVAR", @1); } ;
scatter_memvar_options: scatter_memvar_option { $$ = CMD(STMT_INVALID); PUSH($$, $1); } | scatter_memvar_options ws scatter_memvar_option { $$ = $1; PUSH($$, $3); } ;
text_options: text_option { $$ = CMD(STMT_INVALID); PUSH($$, $1); } | text_options ws text_option { $$ = $1; PUSH($$, $3); } ;
scan_option:
    K_NOOPTIMIZE { $$ = FLAG("NOOPTIMIZE", @1); } | K_REST { $$ = FLAG("REST", @1); }
  | K_FOR ws expression { $$ = OPT("FOR", $3, @3); } | K_WHILE ws expression { $$ = OPT("WHILE", $3, @3); }
  ;
scan_options: scan_option { $$ = CMD(STMT_INVALID); PUSH($$, $1); } | scan_options ws scan_option { $$ = $1; PUSH($$, $3); } ;
seek_option:
    K_IN ws name_expression { $$ = OPT("IN", $3, @3); } | K_RECORD ws expression { $$ = OPT("RECORD", $3, @3); }
  | K_ASCENDING { $$ = FLAG("ASCENDING", @1); } | K_DESCENDING { $$ = FLAG("DESCENDING", @1); }
  | K_SAME { $$ = FLAG("SAME", @1); } | K_AFTER { $$ = FLAG("AFTER", @1); }
  | K_NEAR ws on_off { $$ = OPT("NEAR", $3, @3); } | K_EXACT { $$ = FLAG("EXACT", @1); }
  | K_PREFIX { $$ = FLAG("PREFIX", @1); }
  ;
seek_options: seek_option { $$ = CMD(STMT_INVALID); PUSH($$, $1); } | seek_options ws seek_option { $$ = $1; PUSH($$, $3); } ;
key_range:
    expression                                   { $$ = CMD(STMT_INVALID); PUSH($$, OPT("LOW", $1, @1)); }
  | expression ws ',' ws expression              { $$ = CMD(STMT_INVALID); PUSH($$, OPT("LOW", $1, @1)); PUSH($$, OPT("HIGH", $5, @5)); }
  | expression ws ','                            { $$ = CMD(STMT_INVALID); PUSH($$, OPT("LOW", $1, @1)); }
  | ',' ws expression                            { $$ = CMD(STMT_INVALID); PUSH($$, OPT("HIGH", $3, @3)); }
  ;
order_option:
    K_TAG ws name_expression { $$ = OPT("TAG", $3, @3); }
  | K_ASCENDING { $$ = FLAG("ASCENDING", @1); } | K_DESCENDING { $$ = FLAG("DESCENDING", @1); }
  ;
order_options: order_option { $$ = CMD(STMT_INVALID); PUSH($$, $1); } | order_options ws order_option { $$ = $1; PUSH($$, $3); } ;
copy_option:
    K_WITH ws K_CDX { $$ = FLAG("CDX", @3); }
  | K_FIELDS ws copy_field_list { $$ = new Option("FIELDS", $3); $$->location = @3; }
  | K_FOR ws expression { $$ = grammar_text_option(ctx, "FOR", $3, @3); }
  | K_WHILE ws expression { $$ = grammar_text_option(ctx, "WHILE", $3, @3); }
  | K_ALL { $$ = FLAG("ALL", @1); } | K_REST { $$ = FLAG("REST", @1); }
  | K_NEXT ws expression { $$ = OPT("NEXT", $3, @3); } | K_RECORD ws expression { $$ = OPT("RECORD", $3, @3); }
  ;
copy_field_list:
    name_expression                               { $$ = new OperandList(); $$->add($1); }
  | copy_field_list ws ',' ws name_expression     { $$ = $1; $$->add($5); }
  ;
copy_options: copy_option { $$ = CMD(STMT_INVALID); PUSH($$, $1); } | copy_options ws copy_option { $$ = $1; PUSH($$, $3); } ;
do_option: K_WITH ws argument_list { $$ = new Option("WITH", $3); $$->location = @3; } | in_clause ;
do_options: do_option { $$ = CMD(STMT_INVALID); PUSH($$, $1); } | do_options ws do_option { $$ = $1; PUSH($$, $3); } ;
filter_option: K_TO ws expression { $$ = grammar_text_option(ctx, "TO", $3, @3); } | in_clause ;
filter_options: filter_option { $$ = CMD(STMT_INVALID); PUSH($$, $1); } | filter_options ws filter_option { $$ = $1; PUSH($$, $3); } ;
index_option:
    K_ADDITIVE { $$ = FLAG("ADDITIVE", @1); } | K_ASCENDING { $$ = FLAG("ASCENDING", @1); }
  | K_CANDIDATE { $$ = FLAG("CANDIDATE", @1); } | K_COLLATE ws expression { $$ = OPT("COLLATE", $3, @3); }
  | K_DESCENDING { $$ = FLAG("DESCENDING", @1); } | K_ON ws expression { $$ = grammar_text_option(ctx, "ON", $3, @3); }
  | K_TAG ws name_expression { $$ = OPT("TAG", $3, @3); } | K_UNIQUE { $$ = FLAG("UNIQUE", @1); }
  | K_BINARY { $$ = FLAG("BINARY", @1); } | K_FOR ws expression { $$ = grammar_text_option(ctx, "FOR", $3, @3); }
  ;
index_options: index_option { $$ = CMD(STMT_INVALID); PUSH($$, $1); } | index_options ws index_option { $$ = $1; PUSH($$, $3); } ;
locate_option:
    K_FOR ws expression { $$ = grammar_text_option(ctx, "FOR", $3, @3); }
  | K_WHILE ws expression { $$ = grammar_text_option(ctx, "WHILE", $3, @3); }
  | K_REST { $$ = FLAG("REST", @1); } | K_NOOPTIMIZE { $$ = FLAG("NOOPTIMIZE", @1); }
  ;
locate_options: locate_option { $$ = CMD(STMT_INVALID); PUSH($$, $1); } | locate_options ws locate_option { $$ = $1; PUSH($$, $3); } ;
append_option: K_BLANK { $$ = FLAG("BLANK", @1); } | in_clause | K_NOMENU { $$ = FLAG("NOMENU", @1); } ;
append_options: append_option { $$ = CMD(STMT_INVALID); PUSH($$, $1); } | append_options ws append_option { $$ = $1; PUSH($$, $3); } ;
foreach_item: K_KEY ws variable { $$ = OPT("KEY", $3, @3); } | K_VALUE ws variable { $$ = OPT("VALUE", $3, @3); } ;
foreach_items: foreach_item { $$ = CMD(STMT_INVALID); PUSH($$, $1); } | foreach_items ws foreach_item { $$ = $1; PUSH($$, $3); } ;
use_option:
    engine_option | in_clause | K_SHARED { $$ = FLAG("SHARED", @1); } | K_EXCLUSIVE { $$ = FLAG("EXCLUSIVE", @1); }
  | K_AGAIN { $$ = FLAG("AGAIN", @1); } | K_ALIAS ws name_expression %dprec 1 { $$ = OPT("ALIAS", $3, @3); }
  | K_NOUPDATE { $$ = FLAG("NOUPDATE", @1); }
  ;
use_options: use_option { $$ = CMD(STMT_INVALID); PUSH($$, $1); } | use_options ws use_option { $$ = $1; PUSH($$, $3); } ;
unlock_option: in_clause | K_RECORD ws expression { $$ = OPT("RECORD", $3, @3); } | K_ALL { $$ = FLAG("ALL", @1); } ;
unlock_options: unlock_option { $$ = CMD(STMT_INVALID); PUSH($$, $1); } | unlock_options ws unlock_option { $$ = $1; PUSH($$, $3); } ;
skip_arguments:
    in_clause %dprec 2                            { $$ = CMD(STMT_INVALID); PUSH($$, $1); }
  | expression %dprec 1                           { $$ = CMD(STMT_INVALID); PUSH($$, OPT("RECORDS", $1, @1)); }
  | in_clause ' ' expression %dprec 2             { $$ = CMD(STMT_INVALID); PUSH($$, $1); PUSH($$, OPT("RECORDS", $3, @3)); }
  | expression ws in_clause %dprec 1              { $$ = CMD(STMT_INVALID); PUSH($$, OPT("RECORDS", $1, @1)); PUSH($$, $3); }
  ;
set_text_options: set_text_option { $$ = CMD(STMT_INVALID); PUSH($$, $1); } | set_text_options ws set_text_option { $$ = $1; PUSH($$, $3); } ;
set_text_option:
    K_ON { $$ = FLAG("ON", @1); } | K_OFF { $$ = FLAG("OFF", @1); } | K_TO { $$ = FLAG("TO", @1); }
  | K_TO ws K_MEMVAR ws name_expression { $$ = OPT("TO_MEMVAR", $5, @5); }
  | K_ADDITIVE { $$ = FLAG("ADDITIVE", @1); } | K_SHOW { $$ = FLAG("SHOW", @1); } | K_NOSHOW { $$ = FLAG("NOSHOW", @1); }
  ;
on_off: K_ON { $$ = grammar_bool(true); $$->location = @$; } | K_OFF { $$ = grammar_bool(false); $$->location = @$; } ;
opt_step: %empty { $$ = grammar_integer(1, @$); } | ws K_STEP ws expression { $$ = $4; } ;

/* Variables, declarations, paths */
assign_target: variable %dprec 2 { $$ = $1; } | bracket_element %dprec 2 | paren_element %dprec 2 | path %dprec 1 { $$ = $1; } ;

and_word: K_AND | '.' K_AND '.' ;
or_word: K_OR | '.' K_OR '.' ;
not_word: K_NOT | '.' K_NOT '.' ;

expression: or_level ;
or_level: and_level | or_level ws or_word ws and_level { $$ = grammar_binary(ctx, BINARY_OR, $1, $5, @$); } ;
and_level: not_level | and_level ws and_word ws not_level { $$ = grammar_binary(ctx, BINARY_AND, $1, $5, @$); } ;
not_level:
    not_word ws not_level %dprec 2                { $$ = grammar_unary(ctx, UNARY_NOT, $3, @$); }
  | '!' ws not_level                              { $$ = grammar_unary(ctx, UNARY_NOT, $3, @$); }
  | relation_level %dprec 1
  ;
relation_level:
    additive_level
  | relation_level ws '=' '=' ws additive_level   { $$ = grammar_binary(ctx, BINARY_EQEQ, $1, $6, @$); }
  | relation_level ws '=' ws additive_level       { $$ = grammar_binary(ctx, BINARY_EQ, $1, $5, @$); }
  | relation_level ws '#' ws additive_level       { $$ = grammar_binary(ctx, BINARY_LTGT, $1, $5, @$); }
  | relation_level ws '<' ws additive_level       { $$ = grammar_binary(ctx, BINARY_LT, $1, $5, @$); }
  | relation_level ws '<' '=' ws additive_level   { $$ = grammar_binary(ctx, BINARY_LTEQ, $1, $6, @$); }
  | relation_level ws '=' '<' ws additive_level   { $$ = grammar_binary(ctx, BINARY_LTEQ, $1, $6, @$); }
  | relation_level ws '>' ws additive_level       { $$ = grammar_binary(ctx, BINARY_GT, $1, $5, @$); }
  | relation_level ws '>' '=' ws additive_level   { $$ = grammar_binary(ctx, BINARY_GTEQ, $1, $6, @$); }
  | relation_level ws '=' '>' ws additive_level   { $$ = grammar_binary(ctx, BINARY_GTEQ, $1, $6, @$); }
  | relation_level ws '<' '>' ws additive_level   { $$ = grammar_binary(ctx, BINARY_LTGT, $1, $6, @$); }
  | relation_level ws '!' '=' ws additive_level   { $$ = grammar_binary(ctx, BINARY_LTGT, $1, $6, @$); }
  | relation_level ws '$' ws additive_level       { $$ = grammar_binary(ctx, BINARY_IN_STR, $1, $5, @$); }
  ;
additive_level:
    multiplicative_level
  | additive_level ws '+' ws multiplicative_level { $$ = grammar_binary(ctx, BINARY_ADD, $1, $5, @$); }
  | additive_level ws '-' ws multiplicative_level { $$ = grammar_binary(ctx, BINARY_SUB, $1, $5, @$); }
  ;
multiplicative_level:
    power_level
  | multiplicative_level ws '*' ws power_level    { $$ = grammar_binary(ctx, BINARY_MUL, $1, $5, @$); }
  | multiplicative_level ws '/' ws power_level    { $$ = grammar_binary(ctx, BINARY_DIV, $1, $5, @$); }
  | multiplicative_level ws '%' ws power_level    { $$ = grammar_binary(ctx, BINARY_MOD, $1, $5, @$); }
  ;
power_level:
    operand
  | power_level ws '*' '*' ws operand             { $$ = grammar_binary(ctx, BINARY_POW, $1, $6, @$); }
  | power_level ws '^' ws operand                 { $$ = grammar_binary(ctx, BINARY_POW, $1, $5, @$); }
  ;
operand:
    '(' ws expression ws ')'                      { $$ = $3; $$->parenthesized = true; }
  | '-' ws operand %dprec 1                       { $$ = grammar_unary(ctx, UNARY_NEG, $3, @$); }
  | '+' ws operand                                { $$ = grammar_unary(ctx, UNARY_PLUS, $3, @$); }
  | literal %dprec 3                              { $$ = $1; $$->location = @$; }
  | variable %dprec 2                             { $$ = $1; }
  | bracket_element %dprec 2
  | path %dprec 1                                 { $$ = $1; }
  | call
  ;
call:
    name ws '(' ws ')'                            { $$ = new Operand_Call(NAME_STR($1), nullptr); $$->location = @$; }
  | name ws '(' ws argument_list ws ')'           { $$ = new Operand_Call(NAME_STR($1), $5); $$->location = @$; }
  | K_CAST ws '(' ws operand ' ' K_AS ' ' name ws ')' { $$ = grammar_cast($5, $9, @$); }
  ;
variable:
    name                                          { $$ = new Operand_Variable(NAME_STR($1), false); $$->location = @$; }
  | K_M member_op name                            { $$ = new Operand_Variable(NAME_STR($3), true); $$->location = @$; }
  ;
typed_variable:
    variable                                      { $$ = grammar_declared($1, nullptr, nullptr); }
  | variable ws type_clause                       { $$ = grammar_declared($1, nullptr, $3); }
  ;
bracket_element: variable ws '[' ws expression_list ws ']' { $$ = new Operand_VariableIndex($1, $5); $$->location = @$; } ;
paren_element: variable ws '(' ws expression_list ws ')' { $$ = new Operand_VariableIndex($1, $5); $$->location = @$; } ;
sized_variable:
    variable ws '[' ws expression_list ws ']'     { $$ = grammar_declared($1, $5, nullptr); }
  | variable ws '(' ws expression_list ws ')'     { $$ = grammar_declared($1, $5, nullptr); }
  | variable ws '[' ws expression_list ws ']' ws type_clause { $$ = grammar_declared($1, $5, $9); }
  | variable ws '(' ws expression_list ws ')' ws type_clause { $$ = grammar_declared($1, $5, $9); }
  ;
parameter_list:
    typed_variable                                { $$ = new Stmt_Declaration(STMT_PARAMETERS); grammar_declare_add($$, $1); }
  | parameter_list ws ',' ws typed_variable       { $$ = $1; grammar_declare_add($$, $5); }
  ;
local_list:
    local_item                                    { $$ = new Stmt_Declaration(STMT_LOCAL); grammar_declare_add($$, $1); }
  | local_list ws ',' ws local_item               { $$ = $1; grammar_declare_add($$, $5); }
  ;
local_item: typed_variable | sized_variable ;
sized_list:
    sized_variable                                { $$ = new Stmt_Declaration(STMT_LOCAL); grammar_declare_add($$, $1); }
  | sized_list ws ',' ws sized_variable           { $$ = $1; grammar_declare_add($$, $5); }
  ;
private_list:
    typed_variable                                { $$ = new Stmt_Declaration(STMT_PRIVATE); grammar_declare_add($$, $1); }
  | private_list ws ',' ws typed_variable         { $$ = $1; grammar_declare_add($$, $5); }
  ;
hidden_list:
    typed_variable                                { $$ = new Stmt_Declaration(STMT_HIDDEN); grammar_declare_add($$, $1); }
  | hidden_list ws ',' ws typed_variable          { $$ = $1; grammar_declare_add($$, $5); }
  ;
protected_list:
    typed_variable                                { $$ = new Stmt_Declaration(STMT_PROTECTED); grammar_declare_add($$, $1); }
  | protected_list ws ',' ws typed_variable       { $$ = $1; grammar_declare_add($$, $5); }
  ;
dimension_list:
    dimension_item                                { $$ = new Stmt_Declaration(STMT_DIMENSION); grammar_declare_add($$, $1); }
  | dimension_list ws ',' ws dimension_item       { $$ = $1; grammar_declare_add($$, $5); }
  ;
dimension_item: sized_variable | path_element ;
opt_type: %empty { $$ = nullptr; } | ws type_clause { $$ = $2; } ;
type_clause:
    K_AS ws file_text ws of_clause                { $$ = $5; $$->type_name = grammar_join($3); delete $3; }
  | K_AS ws file_text                             { $$ = new type_clause_st(); $$->type_name = grammar_join($3); delete $3; }
  ;
of_clause: K_OF ws dotted_name                    { $$ = new type_clause_st(); $$->of_class = grammar_join($3); delete $3; } ;
dotted_name:
    name                                          { $$ = new TextPieces(); $$->add($1); }
  | dotted_name '.' name                          { $$ = $1; $$->add($2); $$->add($3); }
  ;
name_expression:
    name %dprec 2                                 { $$ = new Operand_Name(NAME_STR($1)); $$->location = @$; }
  | expression %dprec 1
  ;
/* REPLACE alias.field and alias->field name the field with its work area, as text. */
field_expression:
    name_expression %dprec 1
  | name '.' name %dprec 3                        { $$ = grammar_field_name($1, ".", $3, @$); }
  | name '-' '>' name %dprec 3                    { $$ = grammar_field_name($1, "->", $4, @$); }
  ;
file_expression:
    dotted_name %dprec 3                          { $$ = new Operand_Name(grammar_join($1)); $$->location = @$; delete $1; }
  | expression %dprec 2
  | file_text %dprec 1                            { $$ = new Operand_Name(grammar_join($1)); $$->location = @$; delete $1; }
  ;
file_items:
    file_expression                               { $$ = new OperandList(); $$->add($1); }
  | file_items ws ',' ws file_expression          { $$ = $1; $$->add($5); }
  ;
file_list: file_items ;
keyword_name: keyword                             { $$ = $1; grammar_mark_name(ctx, @1); } ;
name: keyword_name | WORD ;
member_name: name ;
this_word: K_THIS | K_THISFORM ;
path_root:
    name %dprec 1                                 { $$ = new NamePathItem(NAME_STR($1)); $$->location = @$; }
  | this_word %dprec 2                            { $$ = new NamePathItem(NAME_STR($1)); $$->location = @$; }
  ;
path_root_index:
    name ws '[' ws expression_list ws ']' %dprec 1 { $$ = new NameIndexPathItem(NAME_STR($1), $5); $$->location = @$; }
  | this_word ws '[' ws expression_list ws ']' %dprec 2 { $$ = new NameIndexPathItem(NAME_STR($1), $5); $$->location = @$; }
  ;
member_index: name ws '[' ws expression_list ws ']' { $$ = new NameIndexPathItem(NAME_STR($1), $5); $$->location = @$; } ;
path_root_call:
    name ws '(' ws argument_list ws ')'           { $$ = new FunctionPathItem(NAME_STR($1), $5); $$->location = @$; }
  | name ws '(' ws ')'                            { $$ = new FunctionPathItem(NAME_STR($1), nullptr); $$->location = @$; }
  ;
member_call:
    name ws '(' ws argument_list ws ')'           { $$ = new FunctionPathItem(NAME_STR($1), $5); $$->location = @$; }
  | name ws '(' ws ')'                            { $$ = new FunctionPathItem(NAME_STR($1), nullptr); $$->location = @$; }
  ;
/* The items of a path touch each other, so that `a .AND. b` stays two operands. */
path:
    K_M '.' path_root member_tail %dprec 2        { $$ = grammar_path($3, $4, true, @$); }
  | path_root member_tail %dprec 1                { $$ = grammar_path($1, $2, false, @$); }
  | member_tail                                   { auto* w = new WithPathItem(); w->location = @1; $$ = grammar_path(w, $1, false, @$); }
  | path_root_index index_tail                    { $$ = grammar_path($1, $2, false, @$); }
  | path_root_call index_tail                     { $$ = grammar_path($1, $2, false, @$); }
  ;
index_suffix: '[' ws expression_list ws ']'       { $$ = $3; } ;
index_tail:
    member_tail
  | index_suffix index_tail                       { $$ = $2; grammar_prepend($$, new IndexPathItem($1), @1); }
  | index_suffix                                  { $$ = new Path(); grammar_prepend($$, new IndexPathItem($1), @1); }
  ;
member:
    member_name                                   { $$ = new NamePathItem(NAME_STR($1)); $$->location = @$; }
  | member_call
  ;
member_op: '.' | '-' '>' ;
member_tail:
    member_op member %dprec 1                     { $$ = new Path(); $$->add($2); }
  | member_op member index_tail %dprec 1          { $$ = $3; grammar_prepend($$, $2, @2); }
  | member_op member_index %dprec 2               { $$ = new Path(); $$->add($2); }
  | member_op member_index index_tail %dprec 2    { $$ = $3; grammar_prepend($$, $2, @2); }
  ;
path_element:
    path ws '[' ws expression_list ws ']'         { $$ = grammar_declared($1, $5, nullptr); }
  | path ws '[' ws expression_list ws ']' ws type_clause { $$ = grammar_declared($1, $5, $9); }
  ;
assign_items:
    assign_target                                 { $$ = new OperandList(); $$->add($1); }
  | assign_items ws ',' ws assign_target          { $$ = $1; $$->add($5); }
  ;
assign_list: assign_items ;
expression_items:
    expression                                    { $$ = new OperandList(); $$->add($1); }
  | ','                                           { $$ = new OperandList(); grammar_omitted($$, @1); grammar_omitted($$, @1); }
  | ',' ws expression                             { $$ = new OperandList(); grammar_omitted($$, @1); $$->add($3); }
  | expression_items ws ','                       { $$ = $1; grammar_omitted($$, @3); }
  | expression_items ws ',' ws expression         { $$ = $1; $$->add($5); }
  ;
expression_list: expression_items ;
argument_items:
    argument                                      { $$ = new OperandList(); $$->add($1); }
  | ','                                           { $$ = new OperandList(); grammar_omitted($$, @1); grammar_omitted($$, @1); }
  | ',' ws argument                               { $$ = new OperandList(); grammar_omitted($$, @1); $$->add($3); }
  | argument_items ws ','                         { $$ = $1; grammar_omitted($$, @3); }
  | argument_items ws ',' ws argument             { $$ = $1; $$->add($5); }
  ;
argument_list: argument_items ;
argument:
    '@' ws variable %dprec 3                      { $$ = grammar_at(new Operand_Reference($3), @1, @3); }
  | '@' ws path %dprec 2                          { $$ = grammar_at(new Operand_Reference($3), @1, @3); }
  | '@' ws operand %dprec 1                       { $$ = grammar_at(new Operand_Reference($3), @1, @3); }
  | expression
  ;

/* Literals, assembled from the scanner's small tokens */
literal:
    integer_literal | numeric_literal | money_literal | logical_literal | null_literal
  | string_literal | binary_literal | date_literal | datetime_literal
  ;
null_literal: '.' K_NULL '.' { $$ = grammar_null(); } | K_NULL { $$ = grammar_null(); } ;
logical_literal:
    '.' K_F '.' { $$ = grammar_bool(false); } | K_FALSE { $$ = grammar_bool(false); }
  | '.' K_T '.' { $$ = grammar_bool(true); } | K_TRUE { $$ = grammar_bool(true); }
  ;
integer_literal: unsigned_integer { $$ = grammar_integer($1, @$); } | negative_integer { $$ = grammar_integer($1, @$); } ;
numeric_literal: numeric_digits { $$ = grammar_numeric(ctx, $1, @$); } ;
money_literal: money_digits { $$ = grammar_money(ctx, $1, @$); } ;
binary_literal: HEX_BINARY { $$ = grammar_binary_string($1, @$); } ;
string_literal:
    quoted_string                                 { $$ = grammar_string($1, false); }
  | K_U32 quoted_string                           { $$ = grammar_string($2, true); }
  ;
text_token:
    '+' | '-' | '/' | '\\' | '^' | '%' | '(' | ')' | '{' | '}' | '[' | '@' | ':' | '!' | '>' | '<' | '='
  | '?' | '#' | '*' | '.' | '$' | keyword | WORD | HEX_BINARY | HEX_INTEGER | DIGITS | OTHER_CHAR
  ;
single_text_token: text_token | ',' | ';' | ']' | '"' | ' ' | '&' ;
single_text: single_text_token { $$ = new TextPieces(); $$->add($1); } | single_text single_text_token { $$ = $1; $$->add($2); } ;
double_text_token: text_token | ',' | ';' | ']' | '\'' | ' ' | '&' ;
double_text: double_text_token { $$ = new TextPieces(); $$->add($1); } | double_text double_text_token { $$ = $1; $$->add($2); } ;
bracket_text_token: text_token | ',' | ';' | '"' | '\'' | ' ' | '&' ;
bracket_text: bracket_text_token { $$ = new TextPieces(); $$->add($1); } | bracket_text bracket_text_token { $$ = $1; $$->add($2); } ;
raw_token: text_token | ',' | ';' | '"' | '\'' | ']' | ' ' | '&' ;
raw_text: raw_token { $$ = new TextPieces(); $$->add($1); } | raw_text raw_token { $$ = $1; $$->add($2); } ;
file_token: text_token | '"' | '\'' | ']' | '&' ;
file_text: file_token { $$ = new TextPieces(); $$->add($1); } | file_text file_token { $$ = $1; $$->add($2); } ;
quoted_string:
    '\'' single_text '\''                         { $$ = $2; $$->delimiter = $1; }
  | '\'' '\''                                     { $$ = new TextPieces(); $$->delimiter = $1; }
  | '"' double_text '"'                           { $$ = $2; $$->delimiter = $1; }
  | '"' '"'                                       { $$ = new TextPieces(); $$->delimiter = $1; }
  | '[' bracket_text ']'                          { $$ = $2; $$->delimiter = $1; }
  | '[' ']'                                       { $$ = new TextPieces(); $$->delimiter = $1; }
  ;
date_mark: '.' | '-' ;
blank_date: '{' ws '}' { $$ = grammar_empty_date(false); } | '{' ws date_mark ws date_mark ws '}' { $$ = grammar_empty_date(false); } ;
date_literal:
    '{' ws '^' ws unsigned_integer ws '-' ws unsigned_integer ws '-' ws unsigned_integer ws '}'
        { $$ = grammar_date(ctx, $5, $9, $13, @$); }
  | blank_date
  ;
blank_datetime: '{' ws date_mark ws date_mark ws ':' ws ':' ws '}' { $$ = grammar_empty_date(true); } ;
datetime_literal:
    '{' ws '^' ws unsigned_integer ws '-' ws unsigned_integer ws '-' ws unsigned_integer ' ' unsigned_integer ws ':' ws unsigned_integer ws ':' ws unsigned_integer ws '}'
        { $$ = grammar_datetime(ctx, $5, $9, $13, $15, $19, $23, @$); }
  | blank_datetime
  ;

/* Columns of CREATE TABLE and ALTER TABLE */
column_list:
    column                                        { $$ = new Stmt_Table(STMT_CREATE_TABLE); $$->columns.emplace_back($1); }
  | column_list ws ',' ws column                  { $$ = $1; $$->columns.emplace_back($5); }
  ;
column_type_plain:
    K_W { $$ = 'W'; } | K_BLOB { $$ = 'W'; } | K_Y { $$ = 'Y'; } | K_CURRENCY { $$ = 'Y'; }
  | K_D { $$ = 'D'; } | K_DATE { $$ = 'D'; } | K_T { $$ = 'T'; } | K_DATETIME { $$ = 'T'; }
  | K_G { $$ = 'G'; } | K_GENERAL { $$ = 'G'; } | K_L { $$ = 'L'; } | K_LOGICAL { $$ = 'L'; }
  | K_M { $$ = 'M'; } | K_MEMO { $$ = 'M'; } | K_I { $$ = 'I'; } | K_INTEGER { $$ = 'I'; }
  ;
column_type_sized:
    K_C { $$ = 'C'; } | K_CHAR { $$ = 'C'; } | K_B { $$ = 'B'; } | K_DOUBLE { $$ = 'B'; }
  | K_V { $$ = 'V'; } | K_VARCHAR { $$ = 'V'; } | K_Q { $$ = 'Q'; } | K_VARBINARY { $$ = 'Q'; }
  ;
column_type_scaled: K_N { $$ = 'N'; } | K_NUMERIC { $$ = 'N'; } | K_F { $$ = 'F'; } | K_FLOAT { $$ = 'F'; } ;
column:
    name_expression ws column_type_plain opt_column_options
        { $$ = grammar_column($1, $3, nullptr, nullptr, $4, @$); }
  | name_expression ws column_type_sized opt_column_options
        { $$ = grammar_column($1, $3, nullptr, nullptr, $4, @$); }
  | name_expression ws column_type_sized ws '(' ws expression ws ')' opt_column_options
        { $$ = grammar_column($1, $3, $7, nullptr, $10, @$); }
  | name_expression ws column_type_scaled opt_column_options
        { $$ = grammar_column($1, $3, nullptr, nullptr, $4, @$); }
  | name_expression ws column_type_scaled ws '(' ws expression ws ')' opt_column_options
        { $$ = grammar_column($1, $3, $7, nullptr, $10, @$); }
  | name_expression ws column_type_scaled ws '(' ws expression ws ',' ws expression ws ')' opt_column_options
        { $$ = grammar_column($1, $3, $7, $11, $14, @$); }
  ;
column_option:
    K_NOCPTRANS { $$ = FLAG("NOCPTRANS", @1); } | K_AUTOINC { $$ = FLAG("AUTOINC", @1); }
  | K_NULL { $$ = FLAG("NULL", @1); } | K_NOT ws K_NULL { $$ = FLAG("NOT NULL", @$); }
  | K_NEXTVALUE ws expression { $$ = OPT("NEXTVALUE", $3, @3); }
  | K_STEP ws expression { $$ = OPT("STEP", $3, @3); }
  ;
column_options: column_option { $$ = CMD(STMT_INVALID); PUSH($$, $1); } | column_options ws column_option { $$ = $1; PUSH($$, $3); } ;
opt_column_options: %empty { $$ = nullptr; } | ws column_options { $$ = $2; } ;

ws: %empty | ' ' ;
endl: '\n' | END_OF_RANGE ;
text_eol: ws '\n' ;
eol: ws '\n' | ws END_OF_RANGE ;

digits: DIGITS { $$ = new scan_string_list_st; $$->add($1); } | digits DIGITS { $$ = $1; $$->add($2); } ;
decimal_digits:
    digits '.' digits                             { $$ = $1; $$->add($2); $$->append(*$3); delete $3; }
  | '.' digits                                    { $$ = new scan_string_list_st; $$->add($1); $$->append(*$2); delete $2; }
  | digits '.'                                    { $$ = $1; $$->add($2); }
  ;
numeric_digits: decimal_digits ;
money_digits: '$' ws decimal_digits { $$ = $3; } | '$' ws digits { $$ = $3; } ;
unsigned_integer:
    digits                                        { $$ = grammar_decimal_integer(ctx, $1, @$); }
  | HEX_INTEGER                                   { $$ = grammar_hex_integer(ctx, $1, @$); }
  ;
negative_integer: '-' digits                      { $$ = -grammar_decimal_integer(ctx, $2, @2); } ;

keyword:
    K_ADD
  | K_ADDITIVE
  | K_AFTER
  | K_AND
  | K_AGAIN
  | K_ALIAS
  | K_ALL
  | K_ALTER
  | K_APPEND
  | K_ARRAY
  | K_AS
  | K_ASCENDING
  | K_ASSERT
  | K_ASSERTS
  | K_AT
  | K_AUTOINC
  | K_B
  | K_BEGIN
  | K_BINARY
  | K_BOTTOM
  | K_BLANK
  | K_BLOB
  | K_BLOCKSIZE
  | K_BROWSE
  | K_C
  | K_CANCEL
  | K_CANDIDATE
  | K_CASE
  | K_CAST
  | K_CATCH
  | K_CD
  | K_CDX
  | K_CENTURY
  | K_CHAR
  | K_COMPACT
  | K_CODEPAGE
  | K_COLLATE
  | K_COLUMN
  | K_COMMAND
  | K_CONTINUE
  | K_COPY
  | K_CLASS
  | K_CLEAR
  | K_CLS
  | K_CREATE
  | K_CURSOR
  | K_CURRENCY
  | K_D
  | K_DATASESSION
  | K_DATE
  | K_DATETIME
  | K_DECIMALS
  | K_DEFINE
  | K_DELETE
  | K_DELETED
  | K_DESCENDING
  | K_DIMENSION
  | K_DISPLAY
  | K_DECLARE
  | K_DO
  | K_DOUBLE
  | K_DROP
  | K_EACH
  | K_ELSE
  | K_END
  | K_ENDCASE
  | K_ENDDEFINE
  | K_ENDDO
  | K_ENDFOR
  | K_ENDFUNC
  | K_ENDIF
  | K_ENDPROC
  | K_ENDSCAN
  | K_ENDTEXT
  | K_ENDTRY
  | K_ENDWITH
  | K_ENGINE
  | K_ERROR
  | K_EQUAL
  | K_EXACT
  | K_EXCEPT
  | K_EXCLUSIVE
  | K_EXIT
  | K_EXTERNAL
  | K_F
  | K_FALSE
  | K_FDOW
  | K_FINALLY
  | K_FIND
  | K_FILE
  | K_FILTER
  | K_FLAGS
  | K_FLOAT
  | K_KESOBJECT
  | K_FROM
  | K_FUNCTION
  | K_FOR
  | K_G
  | K_GATHER
  | K_GENERAL
  | K_GO
  | K_GOTO
  | K_GREATER
  | K_HIDDEN
  | K_HOURS
  | K_I
  | K_IF
  | K_IFDEF
  | K_IFNDEF
  | K_IMPORT
  | K_IMPORTS
  | K_IN
  | K_INCLUDE
  | K_INDEX
  | K_INTEGER
  | K_KEY
  | K_L
  | K_LIBRARY
  | K_LIKE
  | K_LOCAL
  | K_LOCATE
  | K_LOGICAL
  | K_LOOP
  | K_LONG
  | K_LPARAMETERS
  | K_M
  | K_MEMO
  | K_MEMVAR
  | K_MKDIR
  | K_MODIFY
  | K_N
  | K_NAME
  | K_NEAR
  | K_NEXT
  | K_NEXTVALUE
  | K_NOCPTRANS
  | K_NOT
  | K_NOTE
  | K_NOMENU
  | K_NOOPTIMIZE
  | K_NOSHOW
  | K_NOUPDATE
  | K_NOWAIT
  | K_NULL
  | K_NUMERIC
  | K_OBJECT
  | K_OF
  | K_OFF
  | K_OLEPUBLIC
  | K_ON
  | K_OR
  | K_ORDER
  | K_OTHERWISE
  | K_PACK
  | K_PATH
  | K_PARAMETERS
  | K_POINT
  | K_PRAGMA
  | K_PREFIX
  | K_PRETEXT
  | K_PRIVATE
  | K_PROCEDURE
  | K_PROTECTED
  | K_PUBLIC
  | K_Q
  | K_QUIT
  | K_RECALL
  | K_RECORD
  | K_REINDEX
  | K_RENAME
  | K_REPLACE
  | K_REST
  | K_RETURN
  | K_ROLLBACK
  | K_RUN
  | K_SAME
  | K_SCAN
  | K_SCATTER
  | K_SECONDS
  | K_SEPARATOR
  | K_SELECT
  | K_SEEK
  | K_SET
  | K_SINGLE
  | K_SKIP
  | K_STEP
  | K_STORE
  | K_STRING
  | K_STRUCTURE
  | K_SHARED
  | K_SHORT
  | K_SHOW
  | K_SPACE
  | K_SUSPEND
  | K_SYSFORMATS
  | K_T
  | K_TABLE
  | K_TAG
  | K_TEXT
  | K_TEXTMERGE
  | K_THEN
  | K_THIS
  | K_THISFORM
  | K_TIMEOUT
  | K_TO
  | K_TOP
  | K_TRY
  | K_TRANSACTION
  | K_TRUE
  | K_THROW
  | K_U
  | K_U8
  | K_U16
  | K_U32
  | K_USE
  | K_UNDEF
  | K_UNICODE
  | K_UNIQUE
  | K_UNLOCK
  | K_V
  | K_VALUE
  | K_VARBINARY
  | K_VARCHAR
  | K_W
  | K_WAIT
  | K_WHEN
  | K_WHILE
  | K_WITH
  | K_WINDOW
  | K_Y
  | K_ZAP
  | K_DLLS
  | K_RELEASE
  | K_FIELDS
  | K_RESERVED
  ;
