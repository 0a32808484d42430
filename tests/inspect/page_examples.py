"""Prints a C++ source with every example in C++ of the pages of docs/, each in a function.

    page_examples.py PAGE...
"""

import pathlib
import re
import sys

includes = {"<filter_common/filter_groups.h>", "<filter_common/filter_groups.pb.h>", "<iostream>", "<string>"}
functions = []
for page in sys.argv[1:]:
    for code in re.findall(r"^```cpp\n(.*?)^```$", pathlib.Path(page).read_text(encoding="utf-8"), re.M | re.S):
        includes.update(re.findall(r"^#include (.*)$", code, re.M))
        functions.append(re.sub(r"^#include .*\n", "", code, flags=re.M))

print(*(f"#include {header}" for header in sorted(includes)), sep="\n")
print("using namespace FiltersCommon;")
for number, code in enumerate(functions):
    print(f"""
bool example{number}(FiltersGroup& group, FiltersGroup& held, const FiltersGroup& before,
              const FiltersGroup& after, const FiltersEntry& entry, const std::string& bytes) {{
  static_cast<void>(group), static_cast<void>(held), static_cast<void>(before);
  static_cast<void>(after), static_cast<void>(entry), static_cast<void>(bytes);
  {{
{code}
  }}
  return true;
}}""")
