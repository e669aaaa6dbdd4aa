# Arguments: data, picture, title. Lines "mean predicted, observed, samples".
set terminal pngcairo size 900,700 font "sans,11"
set output ARG2
set title ARG3 noenhanced
set xlabel "predicted probability"
set ylabel "observed frequency"
set xrange [0:1]
set yrange [0:1]
set size square
plot x with lines dashtype 2 linecolor "gray" notitle, \
  ARG1 using 1:2 with linespoints pointtype 7 linewidth 2 notitle, \
  "" using 1:2:(sprintf("%d", $3)) with labels offset 1.5,-1 notitle
