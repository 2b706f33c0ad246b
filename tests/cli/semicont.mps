* Semi-continuous x (0 or within [2, 5]) and w (0 or within [1, 4]).
* min -x - w + 3 y with x <= 1.5, w <= 2.5, x + y >= 1: x can only be 0, so
* y = 1, and w = 2.5: the optimum is 0.5 (a semi-continuous integer w would
* stop at 2 and give 1; continuous columns would give -4).
NAME          SEMICONT
ROWS
 N  obj
 L  c1
 G  c2
 L  c3
COLUMNS
    x         obj       -1.0         c1        1.0
    x         c2        1.0
    y         obj       3.0          c2        1.0
    w         obj       -1.0         c3        1.0
RHS
    RHS       c1        1.5          c2        1.0
    RHS       c3        2.5
BOUNDS
 LO BND       x         2.0
 SC BND       x         5.0
 UP BND       y         10.0
 LO BND       w         1.0
 SC BND       w         4.0
ENDATA
