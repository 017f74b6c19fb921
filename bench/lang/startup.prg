? "result:", 1
