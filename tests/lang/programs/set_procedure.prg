* SET PATH adds folders to search; SET PROCEDURE makes a file's functions
* callable by name. The file is stored as TOOLS.PRG and named "tools".
TRY
  ? helper(1)
CATCH TO e
  ? "before SET PROCEDURE:", e.errorno
ENDTRY
SET PATH TO procedure_lib
SET PROCEDURE TO tools
? helper(14)
