print("result: 1")
