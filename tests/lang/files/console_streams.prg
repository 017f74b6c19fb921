* The console streams by name: standard input through fopen and filetostr.
h = fopen("zo://stdin")
? "handle:", h > 0
? "first line:", fgets(h)
? "second line:", fgets(h)
? "three bytes:", fread(h, 3)
? "seek is refused:", fseek(h, 0), ferror()
? "closed:", fclose(h)
? "the rest:", strtran(filetostr("zo://stdin"), chr(10), "|")
? "written to the screen:", strtofile("through zo://stdout" + chr(10), "zo://stdout")
