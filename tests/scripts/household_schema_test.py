#!/usr/bin/python3
"""The schema of households says of a document what the reader says.

    household_schema_test.py SOURCE_DIR

The tables of tests/unit/households have documents and the reader's remarks. A good document has to
be good to the schema. Of a bad one, the schema has to object to the same places and to no others.
In a table, lines such as "schema: not people[0].name: WHY" leave out what a schema cannot tell,
and "schema: WHY" a whole document.
"""
import json
import re
import sys

try:
    import jsonschema
except ImportError:
    sys.exit("python3-jsonschema is missing: scripts/setup test")

PLACE = re.compile(r"([a-z]+(?:\[\d+\]|\.[^:\s]+)*): ")
ALL = "all places"


def table(path):
    """Yields (title, document, expected lines, exceptions) of each row."""
    row = None
    with open(path, encoding="utf-8") as file:
        for line in file:
            if line.startswith("== "):
                if row:
                    yield row
                row = (line[3:].strip(), [], [], [])
                part = row[1]
            elif row is None or not line.strip():
                continue
            elif line.strip() == "--":
                part = row[2]
            elif line.startswith("schema: "):
                row[3].append(line[len("schema: "):].strip())
            else:
                part.append(line.rstrip("\n"))
    yield row


def place_of(path):
    """[people, 0, name] as the reader writes it."""
    text = ""
    for step in path:
        text += f"[{step}]" if isinstance(step, int) else f".{step}"
    return text.lstrip(".")


def judged(validator, document):
    """The places that the schema objects to."""
    return {place_of(error.absolute_path) for error in validator.iter_errors(document)}


def remarked(lines):
    """The places that the reader objects to; what has no place is about the document."""
    places = set()
    for line in lines:
        if line.startswith("error: "):
            match = PLACE.match(line[len("error: "):])
            places.add(match.group(1) if match else "")
    return places


def excused(exceptions):
    """The places that are left out, or ALL."""
    places = set()
    for text in exceptions:
        match = re.fullmatch(r"not (\S+): .+", text)
        places.add(match.group(1) if match else ALL)
    return places


def main(source):
    failures = []
    counts = {"good": 0, "bad": 0}
    with open(f"{source}/docs/household.schema.json", encoding="utf-8") as file:
        schema = json.load(file)
    jsonschema.Draft202012Validator.check_schema(schema)
    validator = jsonschema.Draft202012Validator(schema)

    def compare(title, document, expected, exceptions):
        found = judged(validator, json.loads(document))
        for place in (found ^ expected) - exceptions:
            who = "the reader alone" if place in expected else "the schema alone"
            failures.append(f"{title}: {who} objects to {place or 'the document'}")
        for place in exceptions & found:
            failures.append(f"{title}: {place} needs no exception")

    for kind in counts:
        for title, document, lines, exceptions in table(f"{source}/tests/unit/households/{kind}.txt"):
            places = excused(exceptions)
            if ALL not in places:
                compare(title, "\n".join(document), remarked(lines), places)
                counts[kind] += 1
    with open(f"{source}/docs/examples/household.json", encoding="utf-8") as file:
        compare("docs/examples/household.json", file.read(), set(), set())
    if counts["good"] < 15 or counts["bad"] < 20:
        failures.append(f"only {counts} documents were compared")
    sys.exit("\n".join(failures) or 0)


if __name__ == "__main__":
    main(sys.argv[1])
