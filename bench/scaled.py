"""Scenarios of one, two and four units made from the one of eight: each table in proportion."""

import json
import re

SCALED = ("vlans", "lags", "addresses", "arp", "neighbours", "groups", "logEntries")


def scaled(path, units):
    """The text of the scenario with so many of its units."""
    with open(path, encoding="utf-8") as file:
        scenario = json.load(file)
    expand = scenario["expand"]
    whole = expand["units"]
    there = lambda name: int(re.match(r"\d+", name).group()) <= units

    all_vlans = f"2-{expand['vlans'] + 1}"
    expand["units"] = units
    for key in SCALED:
        expand[key] = expand[key] * units // whole
    scenario["units"] = {unit: facts for unit, facts in scenario["units"].items() if there(unit)}
    ports = {}
    for selector, facts in scenario["ports"].items():
        left = [part for part in selector.split(",") if there(part)]
        if left:
            ports[",".join(left)] = facts
        if facts.get("tagged") == [all_vlans]:
            facts["tagged"] = [f"2-{expand['vlans'] + 1}"]
    scenario["ports"] = ports
    for acl in scenario["acls"]:
        acl["interfaces"] = [name for name in acl["interfaces"] if there(name)]
    if not there(scenario["mirror"]["destination"]):
        del scenario["mirror"]
    return json.dumps(scenario, indent=1)
