# Writes a dense two-class set with overlapping classes, the same on every machine:
#   awk -f two-class.awk -v rows=5000 -v columns=100
function uniform() {
  state = state * 16807 % 2147483647
  return state / 2147483647
}

BEGIN {
  state = 20240117
  for (row = 1; row <= rows; row++) {
    label = uniform() < 0.5 ? -1 : 1
    line = label > 0 ? "+1" : "-1"
    for (column = 1; column <= columns; column++) {
      value = uniform() + uniform() + uniform() - 1.5 + 0.05 * label
      line = line sprintf(" %d:%.5f", column, value)
    }
    print line
  }
}
