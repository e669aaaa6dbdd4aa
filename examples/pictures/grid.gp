# Arguments: data, picture, title, name of the measure, best value, its log2 C and log2 gamma.
# Contours over lines "log2C log2gamma measure", one block of lines for each C: where the measure
# falls behind the best by a 64th, 32nd, … half of all its range.
set terminal pngcairo size 900,700 font "sans,11"
set output ARG2
set title ARG3 noenhanced
best = ARG5 + 0
stats ARG1 using 3 nooutput
span = best == STATS_max ? STATS_min - best : STATS_max - best
set view map
set contour base
set cntrlabel onecolor
set cntrparam levels discrete best + span / 64, best + span / 32, best + span / 16, \
  best + span / 8, best + span / 4, best + span / 2
set pm3d interpolate 8,8
set palette defined (0 "#fde725", 1 "#5ec962", 2 "#21918c", 3 "#3b528b", 4 "#440154")
if (span < 0) {
  set palette negative
  set cbrange [best + span / 2:best]
}
if (span > 0) {
  set cbrange [best:best + span / 2]
}
set cblabel ARG4
set xlabel "log2 gamma"
set ylabel "log2 C"
set autoscale xfix
set autoscale yfix
set label 1 "" at ARG7 + 0, ARG6 + 0 point pointtype 2 pointsize 2 linecolor "red" front
splot ARG1 using 2:1:3 with pm3d notitle, "" using 2:1:3 with lines linecolor "black" \
  nosurface notitle
