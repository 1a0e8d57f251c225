"""Compares the JSON schemas with what penwick writes and reads.

    check_schemas.py SAMPLE_FILES FOLDER

SAMPLE_FILES is the path of that program; FOLDER receives its files. Every file that penwick writes
must match its schema. Then each file is changed in many ways, and for each change schema and
penwick's reader must agree."""

import collections
import copy
import json
import pathlib
import shutil
import subprocess
import sys

from jsonschema import Draft202012Validator

SCHEMAS = pathlib.Path(__file__).resolve().parents[2] / "schemas"
FILES = {  # kind -> (schema, the files of that kind)
    "macro": ("macro.schema.json", "*.macro.json"),
    "macros": ("macros.schema.json", "*macros.json"),
    "profile": ("ui-wording-profile.schema.json", "*.profile.json"),
}
SAMPLES = {"macro": 10, "macros": 2, "profile": 4}
ANYTHING = [None, True, False, 0, 7, -3, 1.5, "", "text", [], ["text"], [{}], {}, {"a": 1}, {"a": "b"}]
WHOLE_NUMBERS = [7.0, 2**63 - 1, -(2**63), 2**63, -(2**63) - 1, 10**30, 0.25]

failures = []


def expect(condition, message):
    if not condition:
        failures.append(message)


def load(path):
    return json.loads(path.read_text(encoding="utf-8"))


def check_description(name, schema):
    """Checks the schema's metadata, on which its users rely."""
    Draft202012Validator.check_schema(schema)
    expect(schema["$schema"] == "https://json-schema.org/draft/2020-12/schema", f"{name}: $schema")
    expect(schema["$id"] == f"urn:penwick:schema:{name.partition('.')[0]}", f"{name}: $id")
    for field in ("title", "description"):
        expect(schema.get(field), f"{name}: no {field}")
    for member, rule in schema.get("properties", {}).items():
        for field in ("title", "description", "type"):
            expect(rule.get(field), f"{name}: {member} has no {field}")
    expect(
        sorted(schema.get("required", [])) == sorted(schema.get("properties", {})),
        f"{name}: what is described and what is required are not the same",
    )


def changed_records(record):
    """(description of the change, the changed record) for one object and each of its members."""
    yield "unknown member added", {**record, "unheardOf": [None, {"x": 1.5}]}
    for member in record:
        rest = {key: value for key, value in record.items() if key != member}
        yield f"{member} removed", rest
        yield f"{member} in capitals", {**rest, member.upper(): record[member]}
        values = ANYTHING + (WHOLE_NUMBERS if member == "sortOrder" else [])
        for value in values:
            yield f"{member} set to {json.dumps(value)}", {**record, member: value}


def changed(kind, content):
    for value in ANYTHING:
        yield f"replaced by {json.dumps(value)}", value
    if kind != "macros":
        yield from changed_records(content)
        yield "put into an array", [content]
        return
    if not content:
        return
    yield "taken out of the array", content[0]
    for place in (0, len(content) - 1):
        for what, record in changed_records(content[place]):
            other = copy.copy(content)
            other[place] = record
            yield f"macro {place}: {what}", other
    for value in ANYTHING:
        yield f"{json.dumps(value)} appended", [*content, value]


def verdicts_of_penwick(program, kind, texts, folder):
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir()
    files = []
    for number, text in enumerate(texts):
        files.append(folder / f"{number}.json")
        files[-1].write_text(text, encoding="utf-8")
    said = subprocess.run(
        [program, "read", kind, *files], check=True, stdout=subprocess.PIPE, text=True
    ).stdout.split()
    assert len(said) == len(texts)
    return [word == "accepted" for word in said]


def disagreements(validator, cases, verdicts):
    for (what, content), accepted in zip(cases, verdicts):
        if validator.is_valid(content) != accepted:
            yield what


def check_files(program, kind, folder):
    name, pattern = FILES[kind]
    schema = load(SCHEMAS / name)
    check_description(name, schema)
    validator = Draft202012Validator(schema)

    samples = sorted(folder.glob(pattern))
    expect(len(samples) == SAMPLES[kind], f"{kind}: {len(samples)} files were written")
    cases = []
    for sample in samples:
        content = load(sample)
        for error in validator.iter_errors(content):
            failures.append(f"{sample.name}: {error.json_path}: {error.message}")
        if sample in (samples[0], samples[-1]):  # The other samples have the same structure.
            cases += [(f"{sample.name}: {what}", other) for what, other in changed(kind, content)]

    texts = [json.dumps(content) for _, content in cases]
    verdicts = verdicts_of_penwick(program, kind, texts, folder / "changed")
    for what in disagreements(validator, cases, verdicts):
        failures.append(f"{what}: schema and reader do not agree")
    check_that_faults_are_found(kind, schema, cases, verdicts)
    count = collections.Counter(verdicts)
    print(f"{name}: {len(samples)} files, {count[True]} changes accepted, {count[False]} refused")


def check_that_faults_are_found(kind, schema, cases, verdicts):
    """A schema that lacks any one of its rules must fail the check."""
    record = schema["$defs"]["macro"] if kind == "macros" else schema
    for member in list(record["properties"]):
        rules = copy.deepcopy(schema)
        weak = rules["$defs"]["macro"] if kind == "macros" else rules
        weak["required"].remove(member)
        found = any(disagreements(Draft202012Validator(rules), cases, verdicts))
        expect(found, f"{kind}: nothing shows that {member} is required")

        rules = copy.deepcopy(schema)
        weak = rules["$defs"]["macro"] if kind == "macros" else rules
        del weak["properties"][member]["type"]
        found = any(disagreements(Draft202012Validator(rules), cases, verdicts))
        expect(found, f"{kind}: nothing shows the type of {member}")
    found = list(disagreements(Draft202012Validator({}), cases, verdicts))
    expect(len(found) == verdicts.count(False), f"{kind}: a schema without rules passes")


def main(program, folder):
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    subprocess.run([program, "write", folder], check=True)
    for kind in FILES:
        check_files(program, kind, folder)
    embedded = load(SCHEMAS / "macros.schema.json")["$defs"]["macro"]
    expect(
        embedded == load(SCHEMAS / "macro.schema.json"),
        "macros.schema.json describes a macro in another way than macro.schema.json",
    )
    for failure in failures:
        print(failure)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], pathlib.Path(sys.argv[2])))
