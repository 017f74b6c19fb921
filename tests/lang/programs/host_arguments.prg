PARAMETERS argc, argv
? argc
? argv[1]
? later(argv[1])

FUNCTION later(text)
RETURN "called with " + text
