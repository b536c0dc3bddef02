#!/usr/bin/python3
"""Validates tov report documents or header files against a JSON Schema (draft 2020-12).

    validate-reports.py --schema SCHEMA [--header-line] [--expect-invalid] FILE...

Each FILE is a JSON document; with --header-line it is a header file instead: one line,
"X-NG-metadata: " followed by the JSON that is validated. The schema is checked first.
Every error is printed with the JSON path of the value at fault. The exit status is 0
when every file is valid, 1 when any is not, 2 for a usage error or an unusable schema.
With --expect-invalid the outcome is turned round: 0 when every file is invalid (each of
its errors still printed), 1 when any file is valid; that is how a test states that a
broken document must be refused.

Uses Debian's python3-jsonschema (jsonschema.Draft202012Validator).
"""

import argparse
import json
import sys

import jsonschema

HEADER_PREFIX = "X-NG-metadata: "


class UnreadableFile(Exception):
    pass


def load_json_file(path):
    try:
        with open(path, "rb") as stream:
            data = stream.read()
    except OSError as error:
        raise UnreadableFile(f"cannot be read: {error.strerror}")
    return parse_json(data)


def load_header_file(path):
    try:
        with open(path, "rb") as stream:
            data = stream.read()
    except OSError as error:
        raise UnreadableFile(f"cannot be read: {error.strerror}")
    try:
        line = data.decode("utf-8")
    except UnicodeDecodeError as error:
        raise UnreadableFile(f"is no UTF-8 text: {error}")
    if "\n" in line or "\r" in line:
        raise UnreadableFile("is not exactly one line without a line end")
    if not line.startswith(HEADER_PREFIX):
        raise UnreadableFile(f"does not start with {HEADER_PREFIX!r}")
    return parse_json(line[len(HEADER_PREFIX):].encode("utf-8"))


def parse_json(data):
    try:
        return json.loads(data.decode("utf-8"))
    except UnicodeDecodeError as error:
        raise UnreadableFile(f"is no UTF-8 text: {error}")
    except ValueError as error:
        raise UnreadableFile(f"is no JSON: {error}")


MESSAGE_LIMIT = 300


def shortened(text):
    return text if len(text) <= MESSAGE_LIMIT else text[:MESSAGE_LIMIT] + " ..."


def branch_name(error, cause):
    """The alternative of a oneOf/anyOf that a cause belongs to: its title or $ref."""
    index = cause.relative_schema_path[0] if cause.relative_schema_path else None
    if isinstance(index, int) and isinstance(error.validator_value, list) and index < len(error.validator_value):
        branch = error.validator_value[index]
        if isinstance(branch, dict):
            return branch.get("title") or branch.get("$ref") or f"alternative {index + 1}"
    return "an alternative"


def message_of(error):
    if error.validator in ("oneOf", "anyOf"):
        return f"matches none of the alternatives ({error.validator})"
    return shortened(error.message)


def by_path(errors):
    return sorted(errors, key=lambda error: list(map(str, error.absolute_path)))


def cause_lines(error, depth):
    lines = []
    for cause in by_path(error.context or []):
        lines.append(f"{'    ' * depth}as {branch_name(error, cause)}: {cause.json_path}: {message_of(cause)}")
        lines.extend(cause_lines(cause, depth + 1))
    return lines


def error_lines(validator, document):
    """One line per error with its JSON path, in document order; under an error of
    oneOf/anyOf, why each alternative did not match."""
    lines = []
    for error in by_path(validator.iter_errors(document)):
        lines.append(f"{error.json_path}: {message_of(error)}")
        lines.extend(cause_lines(error, 1))
    return lines


def validator_for(schema_path):
    with open(schema_path, "rb") as stream:
        schema = json.load(stream)
    jsonschema.Draft202012Validator.check_schema(schema)
    return jsonschema.Draft202012Validator(schema)


def main():
    parser = argparse.ArgumentParser(description="Validate tov reports or headers against a JSON Schema.")
    parser.add_argument("--schema", required=True, help="the JSON Schema document")
    parser.add_argument("--header-line", action="store_true",
                        help="the files are header files: validate the JSON after \"X-NG-metadata: \"")
    parser.add_argument("--expect-invalid", action="store_true",
                        help="succeed only when every file is invalid")
    parser.add_argument("files", nargs="+", metavar="FILE")
    arguments = parser.parse_args()

    try:
        validator = validator_for(arguments.schema)
    except (OSError, ValueError) as error:
        print(f"{arguments.schema}: unusable schema: {error}")
        return 2
    except jsonschema.exceptions.SchemaError as error:
        print(f"{arguments.schema}: invalid schema at {error.json_path}: {error.message}")
        return 2

    load = load_header_file if arguments.header_line else load_json_file
    valid_files = 0
    for path in arguments.files:
        try:
            lines = error_lines(validator, load(path))
        except UnreadableFile as error:
            lines = [f"$: the file {error}"]
        except RecursionError:
            lines = ["$: the document is nested too deeply to be validated"]
        if lines:
            print(f"{path}: invalid")
            for line in lines:
                print(f"  {line}")
        else:
            valid_files += 1
            print(f"{path}: valid")

    if arguments.expect_invalid:
        return 0 if valid_files == 0 else 1
    return 0 if valid_files == len(arguments.files) else 1


if __name__ == "__main__":
    sys.exit(main())
