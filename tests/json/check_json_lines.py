#!/usr/bin/env python3
"""Every golden input through -json: each line must parse as JSON, the exit
status and the count of misencodings must be the hexadecimal layout's, and
on inputs without CDR headers the elements must stand where the decomposed
layout puts them (offset within the record, depth, header length, length).
The same with -oids -dig -utf8, whose elements, encapsulated ones too, must
stand where the decomposed layout with those options puts them, and which
may add names, encapsulated elements and international text but change
nothing else. And with -tags 3gpp-ps, whose lines must parse too and may
add field names and values in the map's form (field, value, value_error)
but change nothing else.

    check_json_lines.py QORTLV GOLDEN_DIR
"""
import json
import os
import re
import subprocess
import sys
import tempfile

LINE = re.compile(r"^\s*(\d+):d=\s*(\d+) hl=\s*(\d+) l=\s*(-?\d+) (?:prim|cons): (\S.*?)\s*(?::|$)")
PDU = re.compile(r"^Concatenated PDU #\d+ detected at offset (\d+)")


def octets_of(hex_text):
    digits = "".join(re.sub(r"#.*", "", line) for line in hex_text.splitlines())
    return bytes.fromhex("".join(c for c in digits if c in "0123456789abcdefABCDEF"))


def decomposed_elements(listing):
    """(offset within its PDU, depth, header length, length) of each element
    line, end-of-contents lines left out; lines without lengths end it."""
    found = []
    for line in listing.splitlines():
        if PDU.match(line):
            continue
        match = LINE.match(line)
        if match is None:
            continue
        offset, depth, header, length, name = match.groups()
        if name.startswith("END-OF-CONTENTS"):
            continue
        found.append((int(offset), int(depth), int(header), int(length)))
    return found


MEANING = ("-oids", "-dig", "-utf8")
INTERNATIONAL = (12, 28, 30)  # UTF8String, UniversalString, BMPString: -utf8 texts


def children(element):
    """The elements the walk lists inside: a constructed element's, or those
    a string encapsulates under -dig."""
    return element.get("elements", []) + element.get("encapsulated", [])


def json_elements(records):
    """The same four of each element of the records, in listing order; the
    walk of the decomposed layout ends a level at a value that fails, so
    the comparison stops at the first one. Lengths beyond the data are
    compared as the decomposed layout shows them: what there is."""
    found = []
    failed = False

    def visit(element, base, depth):
        nonlocal failed
        if failed or "length" not in element:
            failed = True
            return
        codes = [error["code"] for error in element.get("errors", [])]
        length = -128 if element["length"] is None else element["length"]
        if 35 in codes:
            length = len(element["hex"]) // 2
        found.append((element["offset"] - base, depth, element["header"], length))
        if 18 in codes or 35 in codes:
            failed = True
            return
        for child in children(element):
            visit(child, base, depth + 1)

    for record in records:
        visit(record["element"], record["offset"], 1)
        if failed:
            break
    return found


def errors_of(objects):
    """Every error object of every element, in the order of the elements."""
    found = []

    def visit(element):
        found.extend(element.get("errors", []))
        for child in element.get("elements", []):
            visit(child)

    for record in objects:
        if record["kind"] == "record":
            visit(record["element"])
    return found


def without_meaning(element):
    """The element as -json writes it without -oids, -dig and -utf8."""
    plain = {k: v for k, v in element.items() if k not in ("name", "encapsulated", "elements")}
    if plain.get("class") == "universal" and plain.get("tag") in INTERNATIONAL:
        plain.pop("text", None)
    if "elements" in element:
        plain["elements"] = [without_meaning(child) for child in element["elements"]]
    return plain


def plain_objects(objects):
    return [dict(o, element=without_meaning(o["element"])) if o["kind"] == "record" else o for o in objects]


def parse_lines(path, output, problems):
    objects = []
    for number, line in enumerate(output.split("\n")[:-1], 1):
        try:
            objects.append(json.loads(line))
        except json.JSONDecodeError as error:
            problems.append(f"{path}: line {number} is no JSON: {error}")
            return None
    if output and not output.endswith("\n"):
        problems.append(f"{path}: the output doesn't end with a line end")
    return objects


def compare_positions(binary, path, records, options, problems):
    _, listing = run(binary, "-decomposed", *options, path)
    want = decomposed_elements(listing)
    have = json_elements(records)
    shorter = min(len(want), len(have))
    if have[:shorter] != want[:shorter]:
        at = next(i for i in range(shorter) if have[i] != want[i])
        words = " ".join(options) + " " if options else ""
        problems.append(f"{path}: element {at + 1}: -json {words}{have[at]}, -decomposed {words}{want[at]}")


def check_meaning(binary, path, status, objects, headers, problems):
    """-oids -dig -utf8 add to the objects of -json and take nothing away."""
    meaning_status, output = run(binary, "-json", *MEANING, path)
    found = parse_lines(path, output, problems)
    if found is None:
        return
    if meaning_status != status:
        problems.append(f"{path}: exit status {meaning_status} with {' '.join(MEANING)}, {status} without")
    if plain_objects(found) != plain_objects(objects):
        problems.append(f"{path}: {' '.join(MEANING)} changes more than names, encapsulated elements and texts")
    if not headers:
        compare_positions(binary, path, [o for o in found if o["kind"] == "record"], MEANING, problems)


TAG_MEMBERS = ("field", "value", "value_error")


def without_tags(element):
    """The element as -json writes it without -tags."""
    plain = {k: v for k, v in element.items() if k not in TAG_MEMBERS}
    for inside in ("elements", "encapsulated"):
        if inside in element:
            plain[inside] = [without_tags(child) for child in element[inside]]
    return plain


def count_fields(element):
    return ("field" in element) + sum(count_fields(c) for c in element.get("elements", []) + element.get("encapsulated", []))


def check_tags(binary, path, status, objects, problems):
    """-tags 3gpp-ps adds to the objects of -json and takes nothing away;
    returns how many fields it named."""
    tags_status, output = run(binary, "-json", "-tags", "3gpp-ps", path)
    found = parse_lines(path, output, problems)
    if found is None:
        return 0
    if tags_status != status:
        problems.append(f"{path}: exit status {tags_status} with -tags 3gpp-ps, {status} without")
    stripped = [dict(o, element=without_tags(o["element"])) if o["kind"] == "record" else o for o in found]
    if stripped != objects:
        problems.append(f"{path}: -tags 3gpp-ps changes more than fields and values")
    return sum(count_fields(o["element"]) for o in found if o["kind"] == "record")


def run(binary, *arguments):
    result = subprocess.run([binary, *arguments], capture_output=True)
    return result.returncode, result.stdout.decode("latin-1")


def check(binary, path, problems):
    status, output = run(binary, "-json", path)
    objects = parse_lines(path, output, problems)
    if objects is None:
        return 0
    hex_status, hex_listing = run(binary, "-hexadecimal", path)
    if status != hex_status:
        problems.append(f"{path}: exit status {status}, the hexadecimal layout's is {hex_status}")
    # The same misencodings as the listing reports; a premature end that
    # ends the run unreported still closes the objects with its error, and a
    # value that fails (18) has no message in the listing.
    codes = [e["code"] for e in errors_of(objects) if e["code"] != 18]
    messages = hex_listing.count("Value misencoded")
    unreported = 1 if status == 17 and codes.count(17) > hex_listing.count("premature end") else 0
    if len(codes) - unreported != messages:
        problems.append(f"{path}: {len(codes)} errors, the hexadecimal layout reports {messages}")
    records = [o for o in objects if o["kind"] == "record"]
    headers = any(o["kind"] == "file_header" for o in objects) or any("record_header" in r for r in records)
    if not headers:
        compare_positions(binary, path, records, (), problems)
    check_meaning(binary, path, status, objects, headers, problems)
    return check_tags(binary, path, status, objects, problems)


def main():
    binary, cases = sys.argv[1], sys.argv[2]
    problems = []
    inputs = 0
    fields = 0
    with tempfile.TemporaryDirectory() as work:
        for folder, _, files in sorted(os.walk(cases)):
            if "input.hex" not in files:
                continue
            path = os.path.join(work, "input")
            with open(os.path.join(folder, "input.hex")) as text, open(path, "wb") as out:
                out.write(octets_of(text.read()))
            inputs += 1
            fields += check(binary, path, problems)
            if problems and problems[-1].startswith(path):
                problems[-1] = problems[-1].replace(path, os.path.relpath(folder, cases), 1)
    for problem in problems:
        print(problem)
    # The CDR inputs have fields the bundled map names: none at all means
    # -tags did nothing under -json.
    if fields == 0:
        problems.append("-json -tags 3gpp-ps named no field in any input")
        print(problems[-1])
    print(f"{inputs} inputs, {fields} fields named under -tags 3gpp-ps, {len(problems)} problems")
    return 1 if problems or inputs == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
