* round() with decimals down to the lowest 64-bit integer: every value
* rounds to zero, money as numbers.
? round(1.5, -9223372036854775807-1), round(1.5, -400), round(-123456789.5, -309)
? round($1, -9223372036854775807-1), round($1, -30), round(-$123456.5, -15)
? round(1234.5678, 9223372036854775807), round($12.3456, 9223372036854775807)
