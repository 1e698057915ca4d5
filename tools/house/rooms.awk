# Reads the rooms (tools/house/rooms), then grep's lines of includes; prints every arrow that points
# to where it must not.
function below(room, into,    each, i, n) {
  n = split(named[room], each, " ")
  for (i = 1; i <= n; i++) {
    if (each[i] ~ /^platform\/include/ || each[i] in into) continue
    into[each[i]]
    below(each[i], into)
  }
}
FNR == NR {
  if (/^[^#:]+:/) named[substr($0, 1, index($0, ":") - 1)] = substr($0, index($0, ":") + 1)
  next
}
{
  split($0, part, ":")
  file = part[1]
  match($0, /"[^"]*"/)
  header = substr($0, RSTART + 1, RLENGTH - 2)
  if (header ~ /^vela(c|_[a-z]+)\.h$/) header = "platform/include/" header
  if (header !~ /\//) { print file ":" part[2] ": include by the path from the top"; next }
  room = file
  while (!(room in named) && room ~ /\//) sub(/\/[^\/]*$/, "", room)
  if (!(room in named)) { print file ":" part[2] ": in no room of tools/house/rooms"; next }
  for (each in allowed) delete allowed[each]
  below(room, allowed)
  allowed[room]
  n = split(named[room], own, " ")
  for (i = 1; i <= n; i++) allowed[own[i]]
  for (each in allowed) if (index(header "/", each "/") == 1) next
  print file ":" part[2] ": " room " does not know " header
}
