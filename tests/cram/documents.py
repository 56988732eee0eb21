"""The client's JSON documents: what they are made of, and what docs/json.md says of that."""

import json
import re
import sys


def shape(value):
    """Keys and types of a document; an array is as its elements are, which are all alike."""
    if isinstance(value, dict):
        parts = [f"{key}: {shape(member)}" for key, member in value.items()]
        return "{" + ", ".join(parts) + "}"
    if isinstance(value, list):
        return "[" + " or ".join(sorted({shape(element) for element in value})) + "]"
    return {bool: "switch", int: "number", str: "text", type(None): "nothing"}[type(value)]


def document(text):
    """The one document that an output has to be."""
    lines = text.split("\n")
    if len(lines) != 2 or lines[1] != "":
        return None
    try:
        value = json.loads(lines[0])
    except ValueError:
        return None
    return value if isinstance(value, dict) else None


def told(printed, messages):
    """Whether a failure's document has a reason, and standard error has the same."""
    found = document(printed)
    if found is None:
        return "no single document"
    if "error" not in found:
        return f"no error: {shape(found)}"
    # A message of several lines is one text, of sentences.
    lines = messages.replace("utm_appctl: ", "\n").split("\n")
    if found["error"] not in ". ".join(filter(None, lines)):
        return f"only in the document: {found['error']}"
    return "told"


def main(what, *arguments):
    if what == "table":
        with open(arguments[0], encoding="utf-8") as page:
            for row in re.findall(r"^\| `(.*)` \| `(\{.*\})` \|$", page.read(), re.MULTILINE):
                print(row[0], shape(json.loads(row[1])), sep="\t")
    elif what == "shape":
        found = document(sys.stdin.read())
        print("no single document" if found is None else shape(found))
    elif what == "told":
        with open(arguments[0]) as printed, open(arguments[1]) as messages:
            print(told(printed.read(), messages.read()))


main(*sys.argv[1:])
