#!/usr/bin/env python3
"""Checks what orva-host --json prints against its schema: check_json.py ORVA_HOST SCHEMA ODD_PLUGIN LOG...

Each line must be an object of the schema, without any member that the schema does not name; and each member that it
names must occur in some line, so that the schema holds nothing that is not printed. Exits with 77, for "skipped", where
there is no python3-jsonschema.
"""

import json
import subprocess
import sys

try:
    import jsonschema
except ImportError:
    print("python3-jsonschema is not installed")
    sys.exit(77)

HOST, SCHEMA, ODD_PLUGIN, *LOGS = sys.argv[1:]
COMMANDS = (
    ["laps"],
    ["channels"],
    ["values", "--lap", "4"],
    ["setup"],
    ["check"],
    ["channels", "--stored"],
    ["values", "--stored"],
    ["values", "--lap", "0", "--plugin", ODD_PLUGIN],
)


def refuse(word):
    """For NaN and Infinity, which Python's reader takes although JSON does not have them."""
    raise ValueError(f"{word} is not JSON")


def close(node):
    """Makes all objects of a schema refuse members that they do not name."""
    if isinstance(node, dict):
        if "properties" in node:
            node.setdefault("additionalProperties", False)
        for child in node.values():
            close(child)
    elif isinstance(node, list):
        for child in node:
            close(child)


def members(schema):
    """The names that the definitions of a schema give to members: (definition, name)."""
    return {(name, member) for name, part in schema["$defs"].items() for member in part.get("properties", ())}


def seen_members(schema, name, value, seen):
    """Adds to seen what value, an object of the definition, uses of it and of the definitions that it refers to."""
    part = schema["$defs"][name]
    for member, content in part.get("properties", {}).items():
        if isinstance(value, dict) and member in value:
            seen.add((name, member))
            visit(schema, content, value[member], seen)
    if isinstance(part.get("additionalProperties"), dict):
        for content in value.values():
            visit(schema, part["additionalProperties"], content, seen)


def visit(schema, content, value, seen):
    if "$ref" in content:
        seen_members(schema, content["$ref"].split("/")[-1], value, seen)
    elif "items" in content and isinstance(value, list):
        for item in value:
            visit(schema, content["items"], item, seen)


def main():
    with open(SCHEMA, encoding="utf-8") as file:
        schema = json.load(file)
    jsonschema.Draft202012Validator.check_schema(schema)
    close(schema)
    validator = jsonschema.Draft202012Validator(schema)
    seen = set()
    failures = 0
    for command in COMMANDS:
        run = subprocess.run([HOST, *command, "--json", "-q", *LOGS], stdout=subprocess.PIPE, check=False)
        lines = run.stdout.decode("utf-8").splitlines()
        if not lines:
            print(f"{command}: nothing printed")
            failures += 1
        for line in lines:
            value = json.loads(line, parse_constant=refuse)
            for error in validator.iter_errors(value):
                deepest = jsonschema.exceptions.best_match([error])
                print(f"{command}: {deepest.json_path}: {deepest.message[:300]}")
                failures += 1
            for option in schema["oneOf"]:
                name = option["$ref"].split("/")[-1]
                if validator.evolve(schema={**schema["$defs"][name], "$defs": schema["$defs"]}).is_valid(value):
                    seen_members(schema, name, value, seen)
    for name, member in sorted(members(schema) - seen):
        print(f"the schema's {name} has a member {member} that was not seen")
        failures += 1
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
