"""Prints the enumerations of the Python package as the stubs write them."""

import enum

import filter_inspect

BASES = {str: "str, enum.Enum", int: "int, enum.Enum"}

for name, kind in sorted(vars(filter_inspect).items()):
    if isinstance(kind, type) and issubclass(kind, enum.Enum):
        print(f"class {name}({BASES[kind.__mro__[1]]}):")
        for member in kind:
            print(f"    {member.name} = {member.value!r}")
        print()
