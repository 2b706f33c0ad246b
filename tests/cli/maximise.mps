* OBJSENSE MAX: maximise 3 x + 2 y + 5 (the objective row's RHS entry -5
* is the constant +5) with x + y <= 4, x + 3 y <= 6, x <= 3: x = 3, y = 1
* gives 16.
NAME          MAXSENSE
OBJSENSE
    MAX
ROWS
 N  obj
 L  c1
 L  c2
COLUMNS
    x         obj       3.0          c1        1.0
    x         c2        1.0
    y         obj       2.0          c1        1.0
    y         c2        3.0
RHS
    RHS       c1        4.0          c2        6.0
    RHS       obj       -5.0
BOUNDS
 UP BND       x         3.0
ENDATA
