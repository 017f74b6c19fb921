* The parts of file names; "/" and "\" both separate folders.
? justpath("/data/sales/2024.dbf"), justpath("sales.dbf") == "", justpath("/x.dbf"), justpath("c:\data\x.dbf")
? justfname("/data/sales/2024.dbf"), justfname("data\x.dbf"), justfname("folder/") == ""
? juststem("/data/archive.tar.gz"), juststem("noext"), juststem(".profile"), juststem("dot.")
? justext("/data/archive.tar.gz"), justext("noext") == "", justext(".profile") == "", justext("a.b/c") == ""
? forceext("report.txt", "pdf"), forceext("report", ".pdf"), forceext("dir.v2/report.txt", ""), forceext("a/.profile", "bak")
? defaultext("report", "txt"), defaultext("report.csv", "txt"), defaultext("dir.v2/report", ".txt")
? forcepath("/old/report.txt", "/new"), forcepath("report.txt", "/new/"), forcepath("/old/report.txt", "")
? addbs("/data"), addbs("/data/"), addbs("c:\data\"), addbs("") == "", isnull(addbs(null))
