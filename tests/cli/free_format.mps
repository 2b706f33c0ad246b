* Free MPS without the FREE marker: names longer than eight characters
* and fields that do not stand in the fixed columns.  min x + 2 y with
* x + y >= 3.5, y <= 1 has its optimum 3.5 at x = 3.5, y = 0.
NAME free_format_model
ROWS
 N cost
 G demand_of_the_day
COLUMNS
 x_quantity_long_name cost 1 demand_of_the_day 1
 y cost 2 demand_of_the_day 1
RHS
 rhs demand_of_the_day 3.5
BOUNDS
 UP bnd y 1
ENDATA
