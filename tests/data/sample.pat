;; Hatch patterns for the resource import tests.
*MY_BRICK, Brick courses
0, 0,0, 0,.25
90, 0,0, .25,.25, .25,-.25 ; every other course
*ANSI31, ANSI Iron, Brick, Stone masonry
45, 0,0, 0,.125
