#!/usr/bin/python3
"""Fill a root with what other programs leave on a switch before the daemon starts.

The VLAN profile database (one row per VLAN of the scenario), the vendor OUI database (from Debian's ieee-data, kept in a
cache folder so that a second run copies it), profile templates, exported profiles, the manual trunk and clock files, and
the folders. What exists is overwritten, so a root can be seeded again for another scenario.
"""

import argparse
import csv
import json
import os
import re
import shutil
import sqlite3
import sys

IEEE_CSV = "/usr/share/ieee-data/oui.csv"

APP = "usr/local/appmgr/usr/share/kelo"
FOLDERS = ("tmp/kelo/kelo_ex", "mnt/application/kelo/tmp", "mnt/fastpath", APP + "/oui", APP + "/profileTemplate")
CACHE_FILES = ("tmp/restapi_db", "tmp/rest_db_api_delta.txt", "tmp/tk830.log", "tmp/tk830.log.old", "tmp/fiberOptics_req")

# A word of the VLAN's name -> (type number, profile type, colour); the first that fits.
PROFILES = (
    ("milan", 3, "Audio Video AVB MILAN", "#7E57C2"),
    ("avb", 3, "Audio Video AVB", "#5E35B1"),
    ("dante", 2, "Audio Dante", "#43A047"),
    ("aes67", 2, "Audio AES67", "#66BB6A"),
    ("smpte", 4, "Audio Video SMPTE", "#00897B"),
    ("2110", 4, "Audio Video SMPTE", "#00897B"),
    ("crestron", 10, "Crestron DigitalMedia AV Network", "#1E88E5"),
    ("kramer", 6, "Kramer AV", "#F4511E"),
    ("harman", 11, "HARMAN Professional AV Network", "#FB8C00"),
    ("nucleus", 12, "NUCLEUS Converged AV Network", "#6D4C41"),
    ("birddog", 13, "BirdDog AV Network", "#D81B60"),
    ("visionary", 14, "Visionary AV Network", "#8E24AA"),
    ("audac", 15, "AUDAC Audio and Control Network", "#3949AB"),
    ("lightware", 16, "AVoIP Lightware AV network", "#00ACC1"),
    ("sonos", 17, "Audio Sonos", "#FDD835"),
    ("light", 20, "ETC Lighting", "#FFB300"),
    ("control", 21, "Control", "#757575"),
    ("ndi", 22, "NDI Video", "#C0CA33"),
    ("video", 23, "Video", "#039BE5"),
    ("audio", 24, "Audio", "#7CB342"),
)
# For VLANs whose name says nothing, in turn: every kind that belongs to one maker, and the common ones.
PROFILES_IN_TURN = tuple(row[1:] for row in PROFILES if row[0] not in ("avb", "aes67", "sonos", "video", "ndi")) + (
    (25, "Audio Audio-Technica", "#9CCC65"),
    (26, "Audio Genelec Smart IP", "#AED581"),
    (27, "Poly StudioNet Modular Room", "#5C6BC0"),
    (28, "Blustream Multicast", "#29B6F6"),
    (29, "Sennheiser TeamConnect Bar S - Single Domain Mode", "#26C6DA"),
    (30, "Nice Home Management", "#EF5350"),
    (31, "Telos AllianceLivewire+ AES67", "#EC407A"),
    (32, "G&D KVM-over-IP", "#8D6E63"),
    (33, "URC Automation", "#BDBDBD"),
    (34, "AJA AV Network", "#78909C"),
    (35, "BluOS AV", "#42A5F5"),
    (36, "TARPAN", "#FF7043"),
    (37, "Just Add Power AV", "#D4E157"),
)
# VLANs that carry plain data: the web interface made no profile for them.
NO_PROFILE = ("data", "guest", "office", "internet")

# Vendor OUIs that detection knows; a row of their own where the registry's list lacks them.
VENDOR_OUIS = {
    "Crestron": ("00:10:7F", "00:12:5F", "AC:1F:6B", "C4:42:68", "00:04:05"),
    "HARMAN Professional": ("00:19:0B", "00:60:9F", "00:0F:D4"),
    "Visionary": ("00:0E:14",),
    "NUCLEUS": ("00:02:C5",),
    "BirdDog": ("80:1F:12", "68:27:19", "E8:EB:1B", "FC:0F:E7", "70:B3:D5"),
    "Audio-Technica": ("00:0A:45",),
    "Kramer": ("00:1D:56", "00:02:BC"),
    "Genelec": ("AC:47:23",),
    "Lightware": ("A8:D2:36",),
    "Poly": ("00:E0:DB",),
    "Blustream": ("34:D0:B8",),
    "Sennheiser": ("00:1B:66",),
    "Nice": ("F8:57:2E",),
    "Telos": ("58:50:AB",),
    "G&D": ("00:0F:F4",),
    "ETC": ("00:C0:16",),
    "URC": ("00:1F:B8",),
    "AJA": ("00:0C:17",),
    "BluOS": ("90:56:82",),
    "TARPAN": ("18:66:96",),
    "Just Add Power": ("48:5D:EB", "C2:00:00"),
}

# Minutes from UTC and rule of summer time -> time zone.
TIME_ZONES = {(60, "EU"): "Europe/Berlin", (0, "EU"): "Europe/London", (-300, "USA"): "America/New_York"}

# Template name -> members that differ from TEMPLATE_DEFAULTS.
TEMPLATE_DEFAULTS = {"PTP": False, "AVB": False, "flowControl": False, "igmpSnooping": True, "igmpQuerier": True,
                     "fastLeave": True, "unknownMulticast": "drop", "qosTrust": "dscp"}
TEMPLATES = {
    "Data": {"igmpSnooping": False, "igmpQuerier": False, "unknownMulticast": "flood"},
    "Audio": {"PTP": True},
    "Audio Dante": {"PTP": True, "ptpVersion": 1},
    "Audio AES67": {"PTP": True, "PTP-BC": True, "ptpVersion": 2},
    "Audio Sonos": {"Sonos": True, "igmpQuerier": False, "stpMode": "stp"},
    "Audio Video AVB": {"AVB": True, "PTP": True},
    "Audio Video AVB MILAN": {"AVB": True, "PTP": True},
    "Audio Video AVB MILAN with Dante PTPv1 PTPv2 or AES67": {"AVB": True, "PTP": True, "PTP-BC": True},
    "Audio Video SMPTE": {"PTP": True, "PTP-BC": True, "ptpProfile": "ST 2059-2"},
    "Poly StudioNet Modular Room Switch": {"flowControl": True},
    "Video": {"flowControl": True},
    "NDI Video": {"flowControl": True, "fastLeave": False},
    "Control": {"unknownMulticast": "flood"},
    "ETC Lighting": {"unknownMulticast": "flood", "fastLeave": False},
    "Kramer AV": {"flowControl": True},
    "Crestron DigitalMedia AV Network": {"flowControl": True},
    "HARMAN Professional AV Network": {"PTP": True},
}


def file_name(profile_type):
    return profile_type.replace(" ", "_")


def write_json(path, value):
    with open(path, "w", encoding="utf-8") as out:
        json.dump(value, out, separators=(",", ":"))


def scenario_vlans(scenario):
    """(id, name, profile) of the scenario's VLANs, ascending: those it lists, and those made by "expand"."""
    vlans = {1: {}}
    expanded = scenario.get("expand", {}).get("vlans", 0)
    vlans.update((vlan, {"name": f"AV-{vlan}"}) for vlan in range(2, expanded + 2))
    for key, vlan in scenario.get("vlans", {}).items():
        vlans[int(key)] = {**vlans.get(int(key), {}), **vlan}
    return [(vlan, fields.get("name", ""), fields.get("profile")) for vlan, fields in sorted(vlans.items())]


def profile_by_name(name):
    return next((row[1:] for row in PROFILES if row[0] in name.lower()), None)


def profiles_of(vlans):
    """Rows (id, type number, name, profile type, colour); VLANs of plain data have none."""
    rows = []
    turn = 0
    for vlan, name, own in vlans:
        if own is not None:
            profile = (own["vlanType"], own["type"], own.get("color", "#9E9E9E"))
        elif vlan == 1:
            name, profile = "Default", (1, "Default", "#000000")
        elif any(word in name.lower() for word in NO_PROFILE):
            continue
        else:
            profile = profile_by_name(name)
        if profile is None:
            profile = PROFILES_IN_TURN[turn % len(PROFILES_IN_TURN)]
            turn += 1
        rows.append((vlan, profile[0], name or f"{profile[1]} {vlan}", profile[1], profile[2]))
    return rows


def seed_profiles(root, rows):
    path = os.path.join(root, "tmp/vlanInfo.db")
    fresh = path + ".new"
    if os.path.exists(fresh):
        os.remove(fresh)
    db = sqlite3.connect(fresh)
    db.execute("create table vlanInfo(        id int primary key,        vlanType int,        profileName varchar(256),"
               "        profileType varchar(256),        color varchar(8)        )")
    db.executemany("insert into vlanInfo values(?, ?, ?, ?, ?)", rows)
    db.commit()
    db.close()
    os.replace(fresh, path)  # the daemon waits for the file only: it must be whole when it appears


def own_ports(scenario, field):
    """Number -> value of a field, of those of the first unit's own ports for which the scenario gives one."""
    values = {}
    for key, fields in scenario.get("ports", {}).items():
        for unit, slot, first, last in re.findall(r"(\d+)/(\d+)/(\d+)(?:-(\d+))?", key):
            if (unit, slot) == ("1", "0") and field in fields:
                values.update((port, fields[field]) for port in range(int(first), int(last or first) + 1))
    return dict(sorted(values.items()))


def seed_exports(root, rows, vlan_of):
    """What the configuration side exported: which ports it assigned to each VLAN of a profile type."""
    by_type = {}
    for vlan, _, name, profile_type, _ in rows:
        if profile_type not in ("", "Default"):
            by_type.setdefault(profile_type, []).append((vlan, name))
    for profile_type, vlans in by_type.items():
        entries = [{"vlanId": vlan, "name": name, "ports": {"assignedPort": [port for port in vlan_of if vlan_of[port] == vlan]}}
                   for vlan, name in vlans]
        write_json(os.path.join(root, "tmp/kelo/kelo_ex", file_name(profile_type)), {"profileConfig": {"vlans": entries}})


def seed_trunks(root, scenario):
    lags = scenario.get("lags", {}).items()
    write_json(os.path.join(root, "tmp/manual_trunk_config"), {
        "physicalPort": [port for port, mode in own_ports(scenario, "switchMode").items() if mode == "trunk"],
        "lagPort": [int(number) for number, lag in lags if lag.get("switchMode") == "trunk"]})


def seed_clock(root, scenario):
    system = scenario.get("system", {})
    place = (system.get("utcOffset", 0), system.get("summerTime", ""))
    write_json(os.path.join(root, "mnt/fastpath/vesta_config"),
               {"switchConfig": {"clock": {"timezone": TIME_ZONES.get(place, "UTC")}}})


def seed_templates(root):
    folder = os.path.join(root, APP, "profileTemplate")
    for number, (name, members) in enumerate(TEMPLATES.items(), 1):
        write_json(os.path.join(folder, file_name(name)), {"name": name, "type": number, **TEMPLATE_DEFAULTS, **members})


def build_oui(path, registry):
    vendors = {}
    if registry:
        with open(IEEE_CSV, encoding="utf-8", newline="") as text:
            for row in csv.DictReader(text):
                digits = row["Assignment"].upper()
                vendors.setdefault(":".join((digits[0:2], digits[2:4], digits[4:6])), row["Organization Name"].strip())
    for vendor, ouis in VENDOR_OUIS.items():
        for oui in ouis:
            vendors.setdefault(oui, vendor)
    fresh = f"{path}.{os.getpid()}"
    db = sqlite3.connect(fresh)
    db.execute("create table oui(mac text primary key, vendor text)")
    db.executemany("insert into oui values(?, ?)", sorted(vendors.items()))
    db.commit()
    db.close()
    os.replace(fresh, path)


def seed_oui(root, cache):
    cached = os.path.join(cache, "oui.db")
    sources = max(os.path.getmtime(IEEE_CSV), os.path.getmtime(__file__))
    if not os.path.exists(cached) or os.path.getmtime(cached) < sources:
        os.makedirs(cache, exist_ok=True)
        build_oui(cached, registry=True)
    shutil.copyfile(cached, os.path.join(root, APP, "oui/oui.db"))


def main():
    parser = argparse.ArgumentParser(description="fill a root with what other programs leave on a switch")
    parser.add_argument("--scenario", required=True, help="scenario file whose VLANs get profiles")
    parser.add_argument("--cache", required=True, help="folder that keeps the OUI database between runs")
    parser.add_argument("--fresh", action="store_true", help="remove an earlier run's cache, change list and log")
    parser.add_argument("--few-ouis", action="store_true",
                        help="only the vendors that detection knows, which are the same on every host")
    parser.add_argument("--log-level", metavar="DIGIT", help="threshold of the daemon's log")
    parser.add_argument("root")
    args = parser.parse_args()

    for folder in FOLDERS:
        os.makedirs(os.path.join(args.root, folder), exist_ok=True)
    if args.fresh:
        for name in CACHE_FILES:
            path = os.path.join(args.root, name)
            if os.path.exists(path):
                os.remove(path)
    if args.log_level:
        with open(os.path.join(args.root, "tmp/devmgr_log_level"), "w", encoding="ascii") as out:
            out.write(args.log_level)
    with open(args.scenario, encoding="utf-8") as text:
        scenario = json.load(text)
    rows = profiles_of(scenario_vlans(scenario))
    seed_exports(args.root, rows, own_ports(scenario, "pvid"))
    seed_templates(args.root)
    if args.few_ouis:
        build_oui(os.path.join(args.root, APP, "oui/oui.db"), registry=False)
    else:
        seed_oui(args.root, args.cache)
    seed_trunks(args.root, scenario)
    seed_clock(args.root, scenario)
    seed_profiles(args.root, rows)
    print(f"seeded {args.root}: {len(rows)} VLAN profiles, {len(TEMPLATES)} templates")


if __name__ == "__main__":
    try:
        main()
    except (OSError, ValueError, sqlite3.Error) as error:
        sys.exit(f"seed.py: {error}")
