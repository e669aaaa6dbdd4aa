# Arguments: data, picture, title, samples, names of the two features. Both files hold lines
# "x y label", the data row by row.
set terminal pngcairo size 900,700 font "sans,11"
set output ARG2
set title ARG3 noenhanced
set xlabel ARG5
set ylabel ARG6
set autoscale xfix
set autoscale yfix
set palette defined (0 "#8da0cb", 1 "#fc8d62", 2 "#66c2a5", 3 "#e78ac3", 4 "#ffd92f")
unset colorbox
plot ARG1 using 1:2:3 with image notitle, \
  ARG4 using 1:2:3 with points pointtype 7 pointsize 1.3 linecolor "black" notitle, \
  ARG4 using 1:2:3 with points pointtype 7 pointsize 1 palette notitle
