#!/usr/bin/python3
"""Holds the report schema against the fixtures' expected reports, through the validator.

    check-fixture-reports.py VALIDATOR SCHEMA FIXTURES_FOLDER

Every expected-report.json below FIXTURES_FOLDER/linux/*/ and FIXTURES_FOLDER/macos/*/
must be valid. Then broken copies of one Linux and one macOS report (a number where a
text belongs, an unknown record key, a missing required key) must each be refused, with
an error at the JSON path that was broken. Exit status 0 when all of that holds.
"""

import copy
import glob
import json
import os
import subprocess
import sys
import tempfile


def run_validator(validator, schema, files, expect_invalid=False):
    command = [sys.executable, validator, "--schema", schema]
    if expect_invalid:
        command.append("--expect-invalid")
    result = subprocess.run(command + files, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    return result.returncode, result.stdout


def expected_reports(fixtures):
    reports = []
    for platform in ("linux", "macos"):
        found = sorted(glob.glob(os.path.join(fixtures, platform, "*", "expected-report.json")))
        if not found:
            raise SystemExit(f"no expected reports in {fixtures}/{platform}")
        reports.extend(found)
    return reports


# Each breakage: its name, what it does to the inventory, and the JSON path of the error.
def number_for_text(inventory):
    inventory["iokit"]["keyboards"][0]["name"] = 42
    return "$.HWInventory.iokit.keyboards[0].name"


def unknown_record_key(inventory):
    inventory["iokit"]["networkAdapters"][0]["vlan"] = "7"
    return "$.HWInventory.iokit.networkAdapters[0]"


def missing_required_key(inventory):
    del inventory["sysctl"]["memory"][0]["totalPhysicalRAMBytes"]
    return "$.HWInventory.sysctl.memory[0]"


BREAKAGES = [number_for_text, unknown_record_key, missing_required_key]


def check_breakages(validator, schema, report, folder):
    failures = []
    with open(report, "rb") as stream:
        document = json.load(stream)
    platform = os.path.basename(os.path.dirname(os.path.dirname(report)))
    for breakage in BREAKAGES:
        broken = copy.deepcopy(document)
        path = breakage(broken["HWInventory"])
        name = os.path.join(folder, f"{platform}-{breakage.__name__}.json")
        with open(name, "w", encoding="utf-8") as stream:
            json.dump(broken, stream, indent=2)
        status, output = run_validator(validator, schema, [name], expect_invalid=True)
        if status != 0:
            failures.append(f"{name} ({breakage.__name__}) was accepted:\n{output}")
        elif f"{path}:" not in output:
            failures.append(f"{name} ({breakage.__name__}) was refused, but not at {path}:\n{output}")
        else:
            print(f"refused as it should be: {platform} {breakage.__name__} at {path}")
    return failures


def main():
    if len(sys.argv) != 4:
        print(__doc__)
        return 2
    validator, schema, fixtures = sys.argv[1:]
    reports = expected_reports(fixtures)
    status, output = run_validator(validator, schema, reports)
    print(output, end="")
    failures = [] if status == 0 else ["an expected report of the fixtures is invalid"]

    # One report of each platform that has every record the breakages touch.
    with tempfile.TemporaryDirectory() as folder:
        for report in (os.path.join(fixtures, "linux", "laptop", "expected-report.json"),
                       os.path.join(fixtures, "macos", "imac-fusion", "expected-report.json")):
            failures.extend(check_breakages(validator, schema, report, folder))

    for failure in failures:
        print(f"FAILED: {failure}")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
