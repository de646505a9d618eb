# Every pair of docs/benchmarks.md as a point: gnuplot -e "points='FILE'; picture='FILE.png'" bench/plot.gp
set terminal pngcairo size 900,760 font "sans-serif,11"
set output picture
set logscale x 2
set xrange [0.25:128]
set xtics (0.25, 0.5, 1, 2, 4, 8, 16, 32, 64)
set xlabel "the peer's time / our time (above 1: we are faster)"
set yrange [12.6:-0.6]
set ytics ("raw pipeline" 0, "preview" 1, "exposure,\nwhite balance" 2, "colour" 3, \
           "arithmetic" 4, "filters" 5, "norms" 6, "channels" 7, "borders" 8, "transforms" 9, \
           "moments" 10, "warps" 11, "dithering" 12)
set grid xtics lc rgb "#dddddd"
set arrow from 1, graph 0 to 1, graph 1 nohead lc rgb "#888888" lw 1.5
set key outside top center horizontal
# A point's height within its row follows from its line, so that pictures do not differ by chance.
spread(line) = 0.22 * (line * 0.618034 - floor(line * 0.618034) - 0.5)
plot points using ($2 == 0 ? $3 : NaN):($1 - 0.18 + spread($0)) title "320 x 240" \
       pt 7 ps 0.6 lc rgb "#3b7dd8", \
     points using ($2 == 1 ? $3 : NaN):($1 + 0.18 + spread($0)) title "1280 x 720" \
       pt 7 ps 0.6 lc rgb "#d9822b"
