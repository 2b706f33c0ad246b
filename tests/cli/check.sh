#!/bin/sh
# Runs the kvtl command-line solver on one case and checks what it prints,
# writes and returns.
# Usage: check.sh KVTL DATA_DIR CASE ARGS...
#   optimum FOLDER NAME [COLUMN] [OPTIONS...]
#       solve DATA_DIR/FOLDER/NAME.* and compare the printed objective with
#       the published value in FOLDER/optima.tsv (column "optimum", or the
#       one named; "alt_optimum" is accepted too where given)
#   value FILE EXPECTED [OPTIONS...]
#       solve FILE and compare the objective with EXPECTED
#   value_gz FILE EXPECTED [OPTIONS...]
#       the same for a gzip-compressed copy of FILE
#   exit CODE PATTERN [OPTIONS...]
#       run with OPTIONS; the exit code must be CODE and the output (standard
#       output and error) must match the extended regular expression PATTERN
#   roundtrip FILE EXT
#       write the model of FILE as EXT (lp or mps), solve the written file
#       and compare both objectives
#   solution FILE
#       write the solution in all four formats and check them against the
#       printed objective and nonzero values
#   quiet FILE
#       -q prints the result lines and nothing before them
#   help OPTION...
#       --help exits with 0 and documents every OPTION and the exit codes
#   progress FILE [OPTIONS...]
#       the progress lines of a MIP search: at least one new incumbent, and
#       the last one equal to the final objective
set -u
kvtl=$1
data=$2
case=$3
shift 3

work=$(mktemp -d "${TMPDIR:-/tmp}/kvtl_cli.XXXXXX")
trap 'rm -rf "$work"' EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }

# run OPTIONS...: kvtl's output in $work/out, its exit code in $rc.
run() {
  "$kvtl" "$@" >"$work/out" 2>&1
  rc=$?
  cat "$work/out"
}

# objective_of FILE: the value of the "objective" line.
objective_of() { awk '$1 == "objective" { print $2 }' "$1"; }

# close A B RELTOL: |A - B| <= RELTOL * max(1, |B|).
close() {
  awk -v a="$1" -v b="$2" -v t="$3" 'BEGIN {
    d = a - b; if (d < 0) d = -d; m = b < 0 ? -b : b; if (m < 1) m = 1;
    exit !(a != "" && d <= t * m) }'
}

# model_file FOLDER NAME: the data file of a model.
model_file() {
  for f in "$data/$1/$2.mps.gz" "$data/$1/$2.QPS.gz"; do
    [ -f "$f" ] && { echo "$f"; return; }
  done
  fail "no model $1/$2 in $data"
}

# published FOLDER NAME COLUMN: the values of the model's row in the
# column and in alt_optimum.
published() {
  [ -f "$data/$1/optima.tsv" ] || fail "no $data/$1/optima.tsv"
  awk -F '\t' -v name="$2" -v col="$3" '
    NR == 1 { for (i = 1; i <= NF; i++) { if ($i == col) c = i; if ($i == "alt_optimum") a = i }; next }
    $1 == name { print $c; if (a && $a != "") print $a }' "$data/$1/optima.tsv"
}

case $case in
optimum)
  folder=$1 name=$2
  shift 2
  column=optimum
  case ${1:-} in --*|"") ;; *) column=$1; shift ;; esac
  file=$(model_file "$folder" "$name")
  values=$(published "$folder" "$name" "$column")
  [ -n "$values" ] || fail "no published $column for $name"
  tol=1e-6
  [ "$folder" = miplib3 ] && tol=1e-5
  run "$file" "$@"
  [ "$rc" -eq 0 ] || fail "exit code $rc"
  grep -q '^status  *optimal$' "$work/out" || fail "status is not optimal"
  got=$(objective_of "$work/out")
  for v in $values; do
    close "$got" "$v" "$tol" && exit 0
  done
  fail "objective $got, published $values"
  ;;
value|value_gz)
  file=$1 expected=$2
  shift 2
  if [ "$case" = value_gz ]; then
    gzip -c "$file" >"$work/$(basename "$file").gz" || fail "gzip"
    file=$work/$(basename "$file").gz
  fi
  run "$file" "$@"
  [ "$rc" -eq 0 ] || fail "exit code $rc"
  got=$(objective_of "$work/out")
  close "$got" "$expected" 1e-7 || fail "objective $got, expected $expected"
  ;;
exit)
  code=$1 pattern=$2
  shift 2
  run "$@"
  [ "$rc" -eq "$code" ] || fail "exit code $rc, expected $code"
  grep -E -q -e "$pattern" "$work/out" || fail "no line matches '$pattern'"
  ;;
roundtrip)
  file=$1 ext=$2
  run "$file" --write-model "$work/model.$ext"
  [ "$rc" -eq 0 ] || fail "exit code $rc writing"
  [ -s "$work/model.$ext" ] || fail "no model file written"
  first=$(objective_of "$work/out")
  run "$work/model.$ext"
  [ "$rc" -eq 0 ] || fail "exit code $rc reading the written model"
  second=$(objective_of "$work/out")
  close "$second" "$first" 1e-7 || fail "written model solves to $second, the original to $first"
  ;;
solution)
  file=$1
  run "$file" --print-solution --solution "$work/s.txt"
  [ "$rc" -eq 0 ] || fail "exit code $rc"
  objective=$(objective_of "$work/out")
  # status,<LP status>,<MIP status>,<kind>,<objective>
  written=$(awk -F, '$1 == "status" { print $5 }' "$work/s.txt")
  close "$written" "$objective" 1e-9 || fail "objective $written in the file, $objective printed"
  columns=$(awk '$1 == "model" { print $3 }' "$work/out")
  lines=$(grep -c '^C,' "$work/s.txt")
  [ "$lines" = "$columns" ] || fail "$lines columns in the file, $columns in the model"
  # Every nonzero value of the file is printed with the same value, and
  # nothing else is.
  awk -F, '$1 == "C" && $4 + 0 != 0 { print $3, $4 }' "$work/s.txt" | sort >"$work/file_values"
  awk '/^solution/ { on = 1; next } on && NF == 2 { print $1, $2 }' "$work/out" | sort >"$work/printed"
  [ -s "$work/printed" ] || fail "no nonzero values printed"
  join "$work/file_values" "$work/printed" | awk '{
      d = $2 - $3; if (d < 0) d = -d; m = $2 < 0 ? -$2 : $2; if (m < 1) m = 1;
      if (d > 1e-9 * m) { print "value of " $1 ": " $2 " in the file, " $3 " printed"; bad = 1 } }
    END { exit bad }' || fail "values differ"
  [ "$(wc -l <"$work/file_values")" = "$(wc -l <"$work/printed")" ] ||
    fail "$(wc -l <"$work/file_values") nonzero values in the file, $(wc -l <"$work/printed") printed"
  # The other formats: by name, tables and binary.
  run "$file" -q --solution "$work/s.slx" >/dev/null
  [ "$rc" -eq 0 ] || fail "exit code $rc writing .slx"
  [ "$(grep -c '^ *C ' "$work/s.slx")" = "$columns" ] || fail ".slx does not list every column"
  grep -q '^ENDATA' "$work/s.slx" || fail ".slx has no ENDATA"
  run "$file" -q --solution "$work/s.prt" >/dev/null
  [ "$rc" -eq 0 ] && [ -s "$work/s.prt" ] || fail "no .prt written"
  run "$file" -q --solution "$work/s.sol" >/dev/null
  [ "$rc" -eq 0 ] || fail "exit code $rc writing .sol"
  [ "$(head -c 8 "$work/s.sol")" = KVSLSOL1 ] || fail ".sol does not start with its magic"
  ;;
quiet)
  run -q "$1" >/dev/null
  [ "$rc" -eq 0 ] || fail "exit code $rc"
  [ "$(head -n 1 "$work/out" | awk '{ print $1 }')" = status ] || fail "output before the status line"
  ;;
help)
  run --help
  [ "$rc" -eq 0 ] || fail "exit code $rc"
  for option in "$@"; do
    grep -q -e "^ *$option[ ,]" -e ", $option " "$work/out" || fail "$option is not documented"
  done
  for code in 0 1 2 3 4 5 6; do
    awk -v c="$code" '/^Exit codes/ { on = 1; next } on && $1 == c { found = 1 } END { exit !found }' \
      "$work/out" || fail "exit code $code is not documented"
  done
  ;;
progress)
  file=$1
  shift
  run "$file" --progress 0 "$@"
  [ "$rc" -eq 0 ] || fail "exit code $rc"
  objective=$(objective_of "$work/out")
  last=$(awk '$1 == "*" { v = $5 } END { print v }' "$work/out")
  [ -n "$last" ] || fail "no progress line for a new incumbent"
  close "$last" "$objective" 1e-9 || fail "last incumbent $last, objective $objective"
  ;;
*)
  fail "unknown case $case"
  ;;
esac
exit 0
