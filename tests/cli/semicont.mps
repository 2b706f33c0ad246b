* A semi-continuous x: 0 or within [2, 5] (LO 2 with SC 5).  min -x + 3 y
* with x <= 1.5 and x + y >= 1 leaves x only 0, so y = 1 and the optimum is
* 3 (a continuous x would give -1.5 at x = 1.5).
NAME          SEMICONT
ROWS
 N  obj
 L  c1
 G  c2
COLUMNS
    x         obj       -1.0         c1        1.0
    x         c2        1.0
    y         obj       3.0          c2        1.0
RHS
    RHS       c1        1.5          c2        1.0
BOUNDS
 LO BND       x         2.0
 SC BND       x         5.0
 UP BND       y         10.0
ENDATA
