# Makes our headers and documents readable to Doxygen, which runs this over each of them (docs/Doxyfile).
#
# Headers:
#   - the comment that opens a header becomes the description of the file;
#   - table lines of a comment (indented, or with columns two blanks apart) become a preformatted block;
#   - "///<  40  text" in a record becomes "Byte 40: text";
#   - declarations that stand together under one comment all get it;
#   - a field or constant without a comment refers to the one above, a class to that of its file.
# Documents: a Mermaid flowchart becomes a Graphviz graph. Understood, one statement a line: a["text"],
# a --> b, a -->|text| b, a -.-> b, a -.->|text| b.

FNR == 1 { is_header = FILENAME ~ /\.h$/; at_top = is_header }

!is_header { document_line(); next }
/^ *\/\/\/([^<]|$)/ { comment_line(); next }
{ close_table(); code_line() }

END { close_table() }

function emit(line) {
  print line
  comment = comment line "\n"
}

function comment_line(    indent, text) {
  indent = $0
  sub(/\/\/\/.*/, "", indent)
  text = substr($0, length(indent) + 4)
  if (!in_comment) { in_comment = 1; comment = "" }
  if (at_top) { at_top = 0; in_opening = 1; print "/// @file" }

  if (text ~ /^ [0-9]+\. /) in_list = 1
  else if (text !~ /^  /) in_list = 0
  if (!in_list && is_table(text)) {
    if (!in_table) emit(indent "/// @code{.unparsed}")
    in_table = 1
    table_indent = indent
  } else {
    close_table()
    gsub(/ \.\. /, " … ", text)  # a full stop before a blank would end the brief description
  }
  emit(indent "///" text)
}

function is_table(text) { return text ~ /^  / || text ~ /[^ .]  +[^ ]/ }

function close_table() {
  if (in_table) emit(table_indent "/// @endcode")
  in_table = 0
}

function code_line(    i, n, names, start, type) {
  if (in_opening) { opening = comment; in_opening = 0 }
  at_top = 0
  if (/^extern "C" {/) in_c = 1
  if (!in_comment && starts_declaration()) {
    if (/^(struct|class) [A-Za-z0-9_ ]*\{$/) printf "%s", opening
    else if (/^(struct|class) .*\{$/) print "/// Adds fields."
    else if (in_c && /;$/) print "/// See the description of the file."
    else if (/= delete;$/) sub(/$/, "  ///< Not available.")
    else if (ended && comment != "" && !/[{}]/) printf "%s", comment
    else if (is_bare_field() || is_bare_constant()) {
      sub(/$/, "  ///< " (heading == "" ? "See the description above." : heading))
    }
  }
  note_heading()
  if (match($0, /\/\/\/< +[0-9]+  /)) {
    n = substr($0, RSTART + 4, RLENGTH - 4)
    gsub(/ /, "", n)
    $0 = substr($0, 1, RSTART - 1) "///< Byte " n ": " substr($0, RSTART + RLENGTH)
  } else if (/\/\/\/< +[0-9, ]+$/) {
    sub(/\/\/\/< +/, "///< Bytes ")
  }
  if (/^(struct|class) .*\{$/) in_record = 1
  if (/^}/) in_record = in_c = 0
  ended = /;( *\/\/.*)?$/ && !/[{}]/ && !/^ *(using|static_assert|#)/
  if (/^ *$/ || /[{}]/) comment = ""
  in_comment = 0
  print_declarators()
}

# A "// Written by ...:" line inside a record speaks for the fields below it that have no comment.
function note_heading() {
  if (/^  \/\/ .*/ && in_record) {
    heading = (after_heading ? heading " " : "") substr($0, 6)
    after_heading = 1
    return
  }
  after_heading = 0
  if (/^}/) heading = ""
}

function starts_declaration() {
  return /^ *[A-Za-z]/ && !/\/\/\/</ && !/^ *(static_assert|using|public:|private:|protected:)/
}

# Doxygen gives a comment to the first of several names alone, so `int a, b;` becomes two declarations.
function print_declarators(    code, note, names, n, i, head) {
  if ($0 !~ /^ *(extern )?[A-Za-z][A-Za-z0-9_:<> ]* [A-Za-z0-9_]+(, [A-Za-z0-9_]+)+;/) { print; return }
  code = $0
  note = ""
  if (match($0, / *\/\/\/<.*/)) { note = substr($0, RSTART); code = substr($0, 1, RSTART - 1) }
  sub(/;.*/, "", code)
  n = split(code, names, ", ")
  head = names[1]
  sub(/[A-Za-z0-9_]+$/, "", head)
  print names[1] ";" note
  for (i = 2; i <= n; i++) {
    if (note == "") printf "%s", comment
    print head names[i] ";" note
  }
}

# A record's field, or an operation that only keeps a place, with no comment of its own.
function is_bare_field() {
  return in_record && /^  [A-Za-z].*;$/ && (!/\(/ || /reserved[0-9]/)
}

function is_bare_constant() { return !in_record && /^(inline )?constexpr .*;$/ }

function document_line() {
  if (/^```mermaid$/) {
    in_chart = 1
    print "@dot"
    print "digraph chart {"
    print "  node [shape=box, fontname=Helvetica, fontsize=10]; edge [fontname=Helvetica, fontsize=9];"
  } else if (in_chart && /^```$/) {
    in_chart = 0
    print "}"
    print "@enddot"
  } else if (in_chart) {
    chart_line()
  } else {
    print
  }
}

function chart_line(    label) {
  if (/^ *flowchart LR/) { print "  rankdir=LR;"; return }
  if (/^ *flowchart/) return
  gsub(/<br ?\/?>/, "\\n")
  if (match($0, /\["[^"]*"\]/)) {
    label = substr($0, RSTART + 2, RLENGTH - 4)
    print substr($0, 1, RSTART - 1) " [label=\"" label "\"];"
    return
  }
  label = ""
  if (match($0, /\|[^|]*\|/)) {
    label = " label=\"" substr($0, RSTART + 1, RLENGTH - 2) "\""
    $0 = substr($0, 1, RSTART - 1) " " substr($0, RSTART + RLENGTH)
  }
  if (sub(/-\.->/, "->")) label = label " style=dashed"
  sub(/-->/, "->")
  print $0 " [" label "];"
}
