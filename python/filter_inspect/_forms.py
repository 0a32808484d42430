"""Makes texts of Python's values, which the library's readers then read."""

import json
from collections.abc import Mapping, Set


_LISTS, _POLICERS = ("if", "then", "count"), ("police", "parent")


def _word(word, without="#"):
    """A word of the text form. Nothing else may stand in it, such as a comment."""
    word = str(word)
    if not word or any(c in without or c.isspace() or not c.isprintable() for c in word):
        raise ValueError(f"{word!r} is no word of a rule")
    return word


def _value(value):
    if isinstance(value, bool):
        return "true" if value else "false"
    if isinstance(value, Set):
        return "{" + ",".join(_value(one) for one in sorted(value)) + "}"
    if isinstance(value, (list, tuple)):
        return "[" + ",".join(_value(one) for one in value) + "]"
    return _word(value)


def _pair(name, value):
    return _word(name) if value is None else f"{_word(name)}={_value(value)}"


def _words(values):
    """The words of matches or actions: a text, a mapping, or a list of both."""
    if isinstance(values, str):
        words = [_word(one) for one in values.split()]
        for word in words:
            if word in (*_LISTS, *_POLICERS):
                raise ValueError(f"{word!r} begins another part of a rule")
        return words
    if isinstance(values, Mapping):
        return [_pair(name, value) for name, value in values.items()]
    return [word for one in values for word in _words(one)]


def _policer(policer):
    """The braces of a policer, from a text with or without them, or from a mapping."""
    if isinstance(policer, str):
        text = policer.strip()
        inner = text[1:-1] if text[:1] == "{" and text[-1:] == "}" else text
        words = inner.split()
    else:
        words = _words(policer)
    return "{" + " ".join(_word(one, without="#{}") for one in words) + "}"


def entry_line(id, priority, match, then, count, police, parent):
    """The line of an entry."""
    words = ["entry", _word(id), f"priority={_word(priority)}"]
    for keyword, values in zip(_LISTS, (match, then, count)):
        its = [] if values is None else _words(values)
        if its:
            words += [keyword, *its]
    for keyword, policer in zip(_POLICERS, (police, parent)):
        if policer is not None:
            words += [keyword, _policer(policer)]
    return " ".join(words)


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
