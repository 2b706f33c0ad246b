* A set of type 1 over x, y, z (at most one nonzero), each member on a line
* of its own with its weight.  Without the set x + y + z <= 10 would give -10;
* with it the best single column is y at 5: -5.
NAME          SOSTEST
ROWS
 N  obj
 L  c1
COLUMNS
    x         obj       -1.0         c1        1.0
    y         obj       -1.0         c1        1.0
    z         obj       -1.0         c1        1.0
RHS
    RHS       c1        10.0
BOUNDS
 UP BND       x         4.0
 UP BND       y         5.0
 UP BND       z         3.0
SOS
 S1 SOS       s1        1
    x         1
    y         2
    z         3
ENDATA
