# Makes a program from the first example of each given header. Each example becomes a function.
BEGIN {
  print "#include <filter_common/filter_groups.h>\n#include <iostream>"
  print "using namespace FiltersCommon;"
}
FNR == 1 { place = "before" }
place == "before" && /^\/\/ .*For example:$/ { place = "announced" }
place == "announced" && /^\/\/     / {
  print "int example" ++examples "() {"
  place = "inside"
}
place == "inside" && !/^\/\/     / {
  print "return 0;\n}"
  place = "behind"
}
place == "inside" { print substr($0, 8) }
END {
  if (examples != ARGC - 1) {
    print "header_examples: a header has no example" >"/dev/stderr"
    exit 1
  }
  print "int main() { return"
  for (i = 1; i <= examples; ++i) print "example" i "() +"
  print "0; }"
}
