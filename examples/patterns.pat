;; Hatch patterns of the example classes (classes.txt).
*PAVING, Square paving slabs, 1 unit
0, 0,0, 0,1
90, 0,0, 0,1
