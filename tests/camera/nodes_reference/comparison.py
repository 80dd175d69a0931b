"""What the camera library and the reference make of one node, or of one write to it, side by side."""
import collections
import math
import re
from xml.etree import ElementTree

from reference import DIED, READABLE, UNTOLD, WRITABLE

# `source` is the node's element and those along its pValue (of a mode: of its conditions as well), `type` is the reference's interface of the node. `aspect`: node, mode, value, number, minimum, maximum, increment,
# entries, address, length; of a write: refusal, wire, after.
Difference = collections.namedtuple("Difference", "file seed name source type write aspect ours theirs")

UNDEFINED, CIRCLE = 5, 6  # EAccessMode

BOUNDS = ("minimum", "maximum", "increment")
PLACES = ("number", "entries", "address", "length")


def refused(answer):
    return answer is None or isinstance(answer, dict)


def same_number(ours, theirs):
    return ours == theirs or math.isclose(float(ours), float(theirs), rel_tol=1e-12, abs_tol=1e-300)


def same(ours, theirs):
    """Whether two answers are one: two refusals are, whatever their words."""
    if theirs == UNTOLD:
        return True
    if refused(ours) or refused(theirs):
        return refused(ours) and refused(theirs)
    if isinstance(theirs, (int, float)) and not isinstance(theirs, bool):
        try:
            return same_number(ours if isinstance(ours, (int, float)) else number(ours), theirs)
        except ValueError:
            return False
    return ours == theirs


def number(text):
    try:
        return int(text)
    except ValueError:
        return float(text)


def mode_of(answer):
    """Where the reference throws, ours says that there is no mode."""
    return UNDEFINED if refused(answer) or answer == CIRCLE else answer


def state_differences(ours, theirs):
    """Pairs of answers that are not the same, by aspect. Nodes that are not there have nothing to compare."""
    if mode_of(ours["mode"]) != mode_of(theirs["mode"]):
        return {"mode": (ours["mode"], theirs["mode"])}
    found = {}
    if ours["mode"] in READABLE and not same(ours["text"], theirs["text"]):
        found["value"] = (ours["text"], theirs["text"])
    if ours["mode"] in READABLE + WRITABLE:
        found.update(bound_differences(ours, theirs))
        found.update(place_differences(ours, theirs))
    return found


def bound_differences(ours, theirs):
    """Ours are asked together: one that fails takes the others with it."""
    there = [aspect for aspect in BOUNDS if aspect in ours and aspect in theirs]
    if any(refused(ours[aspect]) for aspect in there) and any(refused(theirs[aspect]) for aspect in there):
        return {}
    return {aspect: (ours[aspect], theirs[aspect]) for aspect in there if not same(ours[aspect], theirs[aspect])}


def place_differences(ours, theirs):
    found = {aspect: (ours[aspect], theirs[aspect]) for aspect in PLACES
             if aspect in ours and aspect in theirs and not same(ours[aspect], theirs[aspect])}
    if "address" in ours and "address" not in theirs and theirs["read"] and not refused(ours["text"]):
        place = [ours["address"], ours["length"]]
        if place != theirs["read"]:
            found["address"] = (place, theirs["read"])
    return found


def write_differences(ours, theirs, before):
    if theirs == DIED:
        return {"refusal": (ours["status"] != 0, "died")}
    if (ours["status"] != 0) != bool(theirs["refused"]):
        follows = any(bound in before for bound in BOUNDS)  # from what is told already
        return {} if follows else {"refusal": (ours["status"] != 0, theirs["refused"])}
    if ours["wire"] != theirs["wire"]:
        return {"wire": (ours["wire"], theirs["wire"])}
    if "value" not in before and not same(ours["after"], theirs["after"]):
        return {"after": (ours["after"], theirs["after"])}
    return {}


class Sources:
    """The elements of a description, by the names of their nodes."""

    def __init__(self, xml):
        self.elements = {}
        for element in ElementTree.fromstring(xml.encode("utf-8", "surrogateescape")).iter():
            if "Name" in element.attrib and len(element):
                self.elements[element.attrib["Name"]] = element

    def of(self, name, aspect):
        element = self.elements.get(name)
        conditions = [] if element is None or aspect != "mode" else [
            child.text for child in element if re.search("}pIs(Implemented|Available|Locked)$", child.tag)]
        return "".join(self.chain(one) for one in [name, *conditions])

    def chain(self, name, depth=0):
        """The text of a node and of those that it has its value from."""
        element = self.elements.get(name)
        if element is None or depth > 10:
            return ""
        text = re.sub(r"(</?)\w+:", r"\1", ElementTree.tostring(element, encoding="unicode"))
        behind = [self.chain(child.text, depth + 1) for child in element if child.tag.endswith("}pValue")]
        return text + "".join(behind)


def differences(file, xml, lines, answers):
    """`lines` as nodes_dump has printed them, `answers` as the reference has given them."""
    sources = Sources(xml)
    earlier = {}  # what differs in a node, and its type; what may not be written alike is told once
    for ours, theirs in zip(lines, answers):
        key = (ours["seed"], ours["name"])
        for kind, aspect, mine, other in differences_of_line(ours, theirs, earlier, key):
            yield Difference(file, *key, sources.of(ours["name"], aspect), kind, ours.get("write"), aspect, mine, other)


def differences_of_line(ours, theirs, earlier, key):
    if theirs is None:
        return [(None, "node", "there", "not there")]
    if "write" in ours:
        before, kind = earlier.get(key, ({}, None))
        found = {} if "mode" in before else write_differences(ours, theirs, before)
    else:
        kind = theirs.get("type")
        found = {"mode": (ours["mode"], "died")} if theirs == DIED else state_differences(ours, theirs)
        earlier[key] = (found, kind)
    return [(kind, aspect, mine, other) for aspect, (mine, other) in found.items()]
