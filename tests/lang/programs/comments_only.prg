* comments only: nothing runs, all is well
