# shellcheck shell=bash
# One run of ctest, told briefly: progress, a second try for what needs real time, and why a test
# failed. Sourced by test, after lib.sh.

FAILURES=$BUILD/failures # of the whole run: each failed test with the end of its output
SHOWN=34                 # lines of it: one failure fits into what CI shows of a log's end

# ctest's lines: its failures, and each tenth of the way.
progress() {
  awk -v name="$1" '
    $2 != "Test" || split($1, done, "/") != 2 { next }
    !/ (Passed|\*\*\*Skipped) / { print }
    (tenth = int(done[1] * 10 / done[2])) > before { before = tenth; print "test: " name ": " $1; fflush() }'
}

# outcomes REPORT: "passed NAME", "failed NAME" or "skipped NAME" of each test in ctest's JUnit
# report. A test whose program is missing has failed.
outcomes() {
  [ ! -e "$1" ] || awk '
    function plain(text) {
      gsub(/&lt;/, "<", text); gsub(/&gt;/, ">", text); gsub(/&quot;/, "\"", text)
      gsub(/&amp;/, "\\&", text)
      return text
    }
    function tell() { if (name != "") print outcome " " plain(name); name = "" }
    /<testcase name="/ {
      tell()
      name = $0; sub(/.*<testcase name="/, "", name); sub(/" classname=.*/, "", name)
      outcome = /status="run"/ ? "passed" : /status="disabled"/ ? "skipped" : "failed"
    }
    /<skipped message="SKIP_/ { outcome = "skipped" }
    END { tell() }' "$1"
}

# outcomes_within FOLDER OUTCOMES: for a program that passed, the outcomes of its tests in Google
# Test's report FOLDER/NAME.xml. One that failed is a failure beside the tests of it that passed.
outcomes_within() {
  local report name
  for report in "$1"/*.xml; do
    [ -e "$report" ] || continue
    name=$(basename "$report" .xml)
    awk '
      function tell() { if (name != "") print outcome " " name; name = "" }
      /<testcase name="/ {
        tell()
        name = $0; sub(/.* classname="/, "", name); sub(/".*/, "", name)
        sub(/.*<testcase name="/, "")
        outcome = /result="s(kipped|uppressed)"/ ? "skipped" : "passed"
        sub(/".*/, ""); name = name "." $0
      }
      /<failure/ { name = "" }
      END { tell() }' "$report" >>"$2"
    sed -i "/^passed ${name//./\\.}\$/d" "$2"
  done
}

# output_of REPORT NAME: what the test printed.
output_of() {
  NAME=$2 awk '
    function plain(text) {
      gsub(/&lt;/, "<", text); gsub(/&gt;/, ">", text); gsub(/&quot;/, "\"", text)
      gsub(/\[NON-XML-CHAR-0x1B\]\[[0-9;]*m/, "", text); gsub(/&amp;/, "\\&", text)
      return text
    }
    /<testcase name="/ {
      name = $0; sub(/.*<testcase name="/, "", name); sub(/" classname=.*/, "", name)
      mine = plain(name) == ENVIRON["NAME"]
    }
    mine && /<system-out>/ { inside = 1; sub(/.*<system-out>/, "") }
    inside { last = sub(/<\/system-out>.*/, ""); print substr(plain($0), 1, 1000); if (last) exit }' "$1"
}

# of OUTCOME < outcomes: the names.
of() { sed -n "s/^$1 //p"; }

# may_try_again PRESET REPORT NAME...: those of the tests that need real daemons and real time, and
# in whose output no sanitizer found a fault.
may_try_again() {
  local preset=$1 report=$2 name timed
  shift 2
  timed=$(ctest --test-dir "$BUILD/$preset" -N -L '-clock$' | sed -n 's/^ *Test *#[0-9]*: //p')
  for name; do
    grep -qxF -- "$name" <<<"$timed" || continue
    grep -qE '(Thread|Address|Leak|Memory)Sanitizer|runtime error:' <(output_of "$report" "$name") || echo "$name"
  done
}

# second_try PRESET REPORT OUTCOMES: the failed tests that may, one after the other with nothing
# beside them. Many failures are no starved moment.
second_try() {
  local preset=$1 report=$2 outcomes=$3 name pattern again
  mapfile -t again < <(of failed <"$outcomes")
  [ ${#again[@]} -le 8 ] || return 0
  mapfile -t again < <(may_try_again "$preset" "$report" "${again[@]}")
  [ ${#again[@]} -gt 0 ] || return 0
  pattern=$(printf '%s\n' "${again[@]}" | sed 's/[][\\.*^$+?(){}|]/\\&/g' | paste -sd '|')
  run_tests "$preset" "$report.again" -R "^($pattern)\$" >/dev/null 2>&1 || true
  for name in "${again[@]}"; do
    grep -qxF -- "passed $name" <(outcomes "$report.again") || { echo "failed twice: $name" && continue; }
    echo "passed on its second try, alone: $name"
    sed -i "$(grep -nxF -- "failed $name" "$outcomes" | cut -d: -f1)s/^failed/passed/" "$outcomes"
  done
}

# tell_failures SUITE REPORT OUTCOMES: what failed and why, now and for the end of the run.
tell_failures() {
  local name
  of failed <"$3" | while read -r name; do
    printf -- '--- %s: failed: %s\n' "$1" "$name"
    output_of "$2" "$name" | tail -n "$SHOWN"
  done | tee -a "$FAILURES"
}

# broke_off SUITE LOG: it did not build, or ran nothing.
broke_off() {
  { printf -- '--- %s: broke off\n' "$1" && tail -n "$SHOWN" "$2"; } >>"$FAILURES"
}

# The names come last: they are what is looked for first.
tell_all_failures() {
  [ -s "$FAILURES" ] || return 0
  printf '\n=== What failed\n'
  cat "$FAILURES"
  grep -E '^--- [a-z]+: (failed|broke off)' "$FAILURES"
}
