#!/usr/bin/python3
"""Checks that Python's protocol-buffer library and this library read each other's messages.

    interop_test.py [EMULATOR...] PEER GENERATED

PEER is the program built from peer.cpp, GENERATED the folder with the Python classes of the schemas.
Python reads every sample of the match and action classes and every golden entry and group. It builds
each message anew from the fields that it finds, and must write the same bytes, which the library can
read. Every field of the schemas must occur.
"""

import subprocess
import sys

*PEER, GENERATED = sys.argv[1:]
sys.path.insert(0, GENERATED)

from google.protobuf.internal import api_implementation

import filter_actions_pb2
import filter_counter_pb2
import filter_entries_pb2
import filter_groups_pb2
import filter_matches_pb2

CLASSES = {
    "MatchPB": filter_matches_pb2.MatchPB,
    "ActionPB": filter_actions_pb2.ActionPB,
    "CounterPB": filter_counter_pb2.CounterPB,
    "FiltersEntryPB": filter_entries_pb2.FiltersEntryPB,
    "FiltersGroupPB": filter_groups_pb2.FiltersGroupPB,
}


def rebuild(message, result, seen):
    """Sets in an empty message the fields of another, and notes which there are."""
    for field, value in message.ListFields():
        seen.add(field.full_name)
        if field.message_type:
            for element in value:
                rebuild(element, getattr(result, field.name).add(), seen)
        elif field.label == field.LABEL_REPEATED:
            getattr(result, field.name).extend(value)
        else:
            setattr(result, field.name, value)
    return result


assert api_implementation.Type() == "python", "set PROTOCOL_BUFFERS_PYTHON_IMPLEMENTATION=python"
lines = subprocess.run(PEER, stdout=subprocess.PIPE, check=True, text=True).stdout.splitlines()
seen = set()
for line in lines:
    name, sent = line.split(" ")
    message = CLASSES[name].FromString(bytes.fromhex(sent))
    written = rebuild(message, CLASSES[name](), seen).SerializeToString().hex()
    assert written == sent, f"{name}:\n{message}\nreceived as {sent}\nwritten as  {written}"

for name in CLASSES:
    fields = {field.full_name for field in CLASSES[name].DESCRIPTOR.fields}
    assert fields <= seen, f"no sample has {fields - seen}"

print(f"{len(lines)} messages, {len(seen)} fields")
