# return statements that do two things: `return a, b;`. A comma within brackets, a text or the
# arguments of a template parts nothing.
FNR == 1 { statement = "" }
/^ *\/\// { next }
statement == "" && match($0, /(^|[ (;{])return[ (]/) { line = FNR; statement = substr($0, RSTART) " "; more = 0 }
statement != "" && more++ { statement = statement $0 " " }
statement != "" && (/;/ || more > 12) {
  gsub(/\\./, "", statement)
  gsub(/"[^"]*"|'.'/, "0", statement)
  while (gsub(/\([^()]*\)|\{[^{}]*\}|\[[^][]*\]/, "", statement)) continue
  while (gsub(/[A-Za-z_]<[^<>=;]*>/, "T", statement)) continue
  sub(/.*return/, "", statement)
  sub(/;.*/, "", statement)
  if (statement ~ /,/ && statement !~ /[({[]/) print FILENAME ":" line ": one thing a statement"
  statement = ""
}
