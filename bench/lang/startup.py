print("result:", 1)
