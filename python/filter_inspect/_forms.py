"""Makes texts of Python's values, which the library's readers then read."""

import json
from collections.abc import Iterable, Mapping, Set
from enum import Enum


_LISTS, _POLICERS = ("if", "then", "count"), ("police", "parent")


def _word(word, without="#"):
    """A word of the text form. Nothing else may stand in it, such as a comment."""
    word = str(word)
    if not word or any(c in without or c.isspace() or not c.isprintable() for c in word):
        raise ValueError(f"{word!r} is no word of a rule")
    return word


def _value(value):
    if isinstance(value, Enum):
        value = value.value
    if isinstance(value, bool):
        return "true" if value else "false"
    if isinstance(value, Set):
        return "{" + ",".join(sorted(map(_value, value))) + "}"
    if isinstance(value, (list, tuple)):
        return "[" + ",".join(_value(one) for one in value) + "]"
    return _word(value)


def _pair(name, value, stands_alone):
    if value is None or (value is True and stands_alone(name)):
        return _word(name)
    return f"{_word(name)}={_value(value)}"


def _words(values, what, stands_alone=lambda name: False):
    """The words of matches or actions: a text, a mapping, or a list of both."""
    if isinstance(values, str):
        words = [_word(one) for one in values.split()]
        for word in words:
            if word in (*_LISTS, *_POLICERS):
                raise ValueError(f"{word!r} begins another part of a rule")
        return words
    if isinstance(values, Mapping):
        return [_pair(name, value, stands_alone) for name, value in values.items()]
    if isinstance(values, Iterable) and not isinstance(values, (bytes, bytearray, memoryview)):
        return [word for one in values for word in _words(one, what, stands_alone)]
    raise TypeError(f"{what} is a text, a mapping, or a list of them, and not {type(values).__name__}")


def _policer(policer, what):
    """The braces of a policer, from a text with or without them, or from a mapping."""
    if isinstance(policer, str):
        text = policer.strip()
        if text == "-" or (text and not text.strip("0123456789abcdefABCDEF")):
            return text  # the bytes of a policer
        inner = text[1:-1] if text[:1] == "{" and text[-1:] == "}" else text
        words = inner.split()
    else:
        words = _words(policer, what)
    return "{" + " ".join(_word(one, without="#{}") for one in words) + "}"


def entry_line(id, priority, match, then, count, police, parent, stands_alone):
    """The line of an entry. `stands_alone` says whether an entry can hold such a word."""
    words = ["entry", str(id), f"priority={priority}"]
    for keyword, what, values in zip(_LISTS, ("match", "then", "count"), (match, then, count)):
        its = [] if values is None else _words(
            values, what, lambda name: stands_alone(f"entry 0 priority=0 {keyword} {_word(name)}"))
        if its:
            words += [keyword, *its]
    for keyword, policer in zip(_POLICERS, (police, parent)):
        if policer is not None:
            words += [keyword, _policer(policer, keyword)]
    return " ".join(words)


def entry_part(line, keyword):
    """What entry_line() takes for a part of the line: a dict, or a text for a policer."""
    words, found = [], False
    for word in line.partition("  #")[0].split(" "):
        if word in (*_LISTS, *_POLICERS):
            found = word == keyword
        elif found:
            words.append(word)
    if keyword in _POLICERS:
        return " ".join(words) or None
    pairs = (word.partition("=") for word in words)
    return {int(name) if keyword == "count" else name: value or None for name, _, value in pairs}


def dumped(values):
    return json.dumps(values, allow_nan=False)


def loaded(text):
    return json.loads(text)


def document(values, version):
    """The document of a group, or the document itself."""
    if "groups" in values:
        return dumped(values)
    return dumped({"format": "filter-groups", "version": version, "groups": [values]})


def group_of(text):
    return json.loads(text)["groups"][0]
