#!/usr/bin/env python3
"""Works out what the export of the emulator's own camera (GigE, model EMU-1, serial EMU0001, version 1.0.0, no
filter file) has to be: emulator_export.fpk, its log lines emulator_export.log, and the reasons for every
feature in emulator_export.md below its line "## Feature by feature". It shares nothing with the program but the
rules.

Without an argument it says whether the three files are as it works them out; with --write it writes them. After
a change of the emulator's description or seed: write, read the difference against what the change should do,
commit."""
import json
import pathlib
import re
import struct
import sys

sys.dont_write_bytecode = True  # leave no folder of compiled modules between the data
from emulated_node_model import Camera, Refused, compute, parse, text

HERE = pathlib.Path(__file__).parent
DESCRIPTION = HERE.parents[1] / "src" / "camera_emulator" / "description"

MODEL = "EMU-1"
VERSION = "1.0.0"
SKIPPED = ("GevCurrentIPAddress", "GevCurrentSubnetMask", "GevCurrentDefaultGateway", "LUTValueAll",
           "GevPersistentIPAddress", "GevPersistentSubnetMask", "GevPersistentDefaultGateway", "GevSCDA",
           "GevCurrentIPConfigurationDHCP", "GevCurrentIPConfigurationPersistentIP", "GevPAUSEFrameReception")
NEVER = ("UserSetDefault", "UserSetSelector", "DeviceSerialNumber", "DeviceUserID", "BoardDeviceType",
         "DeviceFirmwareVersion")
BY_ZERO = "division by zero"  # the calculator's own words
NUMBER = re.compile(r"(0x)?[A-Fa-f0-9]+")


def word(value):
    return struct.pack(">I", value)


def bootstrap():
    """The GigE Vision registers of an emulated camera as far as features show them, while its one host holds it."""
    return {0x0000: word(0x00010002), 0x0014: word(5), 0x0048: b"Emulated cameras", 0x0068: MODEL.encode(),
            0x0088: b"1.0.0", 0x00A8: b"Software camera", 0x00D8: b"EMU0001", 0x0670: word(1000),
            0x0938: word(3000), 0x093C: word(0) + word(1000000000), 0x0A00: word(1), 0x0D04: word(1400)}


def string_to_integer(written):
    return int(written, 16) if written.startswith("0x") or re.search("[A-Fa-f]", written) else int(written)


def escaped(written):
    return written.replace("&", "&amp;").replace("<", "&lt;").replace(">", "&gt;").replace('"', "&quot;")


def exchanged(value):
    return (value >> 16 | value << 16) & 0xFFFFFFFF


def reversed_bytes(value):
    return struct.unpack("<I", struct.pack(">I", value))[0]


class Failed(Exception):
    """A register attempt that ends; its argument is the log line, if there is one."""


class LeftOut(Exception):
    """A register without bytes: nothing else is tried, nothing is said."""


class Result:
    def __init__(self, value, formula="", variables=""):
        self.value, self.formula, self.variables = value, formula, variables


# ---- the index of the description --------------------------------------------------------------------------

class Index:
    def __init__(self, root):
        self.nodes, self.category_of, self.features = {}, {}, []
        top = next((c for c in root.iter("Category") if c.get("Name") == "Root"), [])
        self.categories = [child.text for child in top]
        self.walk(root)
        self.pairs = [(name, child.text) for name in self.features
                      for child in (self.nodes[name] if name in self.nodes else ()) if child.tag == "pSelected"]

    def walk(self, parent):
        for child in parent:
            name = child.get("Name", "")
            if child.tag == "pFeature":
                if parent.tag == "Category" and parent.get("Name") in self.categories:
                    self.category_of[child.text] = parent.get("Name")
                    self.features.append(child.text)
            elif child.tag == "Category" and self.category_of.get(name) in self.categories:
                if name not in self.categories:
                    self.categories.append(name)
            if child.tag == "EnumEntry":
                continue
            if name:
                self.nodes[name] = child
            self.walk(child)


# ---- registers behind features -----------------------------------------------------------------------------

class Evaluator:
    def __init__(self, index, camera, log):
        self.index, self.nodes, self.camera, self.log = index, index.nodes, camera, log
        self.selected = {}  # node that holds a selector's number -> selector; grows from feature to feature
        self.terms = []  # of the address worked out last, for the explanation
        self.leftover = []  # what the formula that failed last had given until then

    def failure(self, line):
        self.log.append(line)
        return None

    def is_selected(self, name):
        selectors = [self.nodes[selector] for selector, selected in self.index.pairs if selected == name]
        for selector in selectors:
            if selector.tag in ("Enumeration", "Integer"):
                self.selected.setdefault(text(selector, "pValue") or selector.get("Name"), selector)
        return [selector.get("Name") for selector in selectors]

    def register(self, element, converters):
        if element.tag in ("Register", "IntReg", "MaskedIntReg", "StructReg", "StringReg"):
            return element
        if element.tag in ("IntConverter", "Converter"):
            converters.append(element)
        key = element.get("Name") if element.tag == "StructEntry" else text(element, "pValue")
        if key is None:
            return None
        target = self.nodes[key]  # the emulator's description has no dangling reference
        if target.tag in ("IntReg", "MaskedIntReg", "StructReg", "StringReg"):
            return target
        if target.tag == "StructEntry":
            return self.nodes.setdefault(key + "_", self.camera.parents[target])
        return self.register(target, converters)

    def addresses(self, register):
        name = register.get("Name", "")
        terms, told = [], []
        for child in register:
            if child.tag in ("Address", "pAddress"):
                terms.append(self.term(child.text))
                if terms[-1] is None:
                    self.terms = told + [f"`{child.text}` that has no value"]
                    return self.failure(f"getIntRegAddress getValue failed:{child.text}")
                told.append(child.text if NUMBER.fullmatch(child.text) else self.told(child.text, terms[-1]))
        self.terms = told
        base = next((term for term in terms if len(term) == 1), None)
        if base is None:
            return self.failure(f"getIntRegAddress  failed:{name}")
        terms.remove(base)
        if len({len(term) for term in terms}) > 1:
            return self.failure(f"getIntRegAddress  failed:{name}")
        base = base[0]
        if not terms:
            return [base]
        return [Result(base.value + sum(r.value for r in parallel), base.formula,
                       base.variables + "".join(r.variables for r in parallel)) for parallel in zip(*terms)]

    def told(self, name, results):
        formula = results[0].formula
        return f"`{name}`{f' ({formula})' if formula else ''} = {', '.join(str(r.value) for r in results)}"

    def term(self, written):
        return [Result(string_to_integer(written))] if NUMBER.fullmatch(written) else self.values(self.nodes[written])

    def values(self, element):
        name = element.get("Name")
        if element.tag == "Integer":
            results = self.integers(element)
            return results if results is not None else self.failure(f"getValue  getIntValue failed:{name}")
        if element.tag == "Enumeration":
            return [Result(value) for value in self.camera.supported(name)]
        if element.tag != "IntSwissKnife":
            return self.failure(f"getValue  failed:{name} unsupport tagname{element.tag}")
        variables = self.variables(element.findall("pVariable"))
        formula = text(element, "Formula")
        if variables is None:
            return None
        if not formula or not variables:
            return self.failure(f"getValue  failed:{name} no formula or variables")
        results = [self.combination(name, formula, chosen) for chosen in self.choices(sorted(variables), variables)]
        if None not in results:
            return results
        self.leftover = [result for result in results if result]
        return None

    def variables(self, elements):
        """Variable name -> (node name, values)."""
        found = {}
        for element in elements:
            results = self.integers(self.nodes[element.text])
            if not results:
                return self.failure(f"getValue getIntValue failed:{element.text}"
                                    + (" value is empty" if results is not None else ""))
            found[element.get("Name")] = (element.text, results)
        return found

    def choices(self, names, variables):
        """A value for every variable: (name, node, value) each. The last name changes fastest."""
        if not names:
            return [[]]
        node, results = variables[names[0]]
        return [[(names[0], node, r.value)] + rest
                for r in results for rest in self.choices(names[1:], variables)]

    def combination(self, name, formula, chosen):
        """Variables are replaced as plain text, wherever their names stand. A failure does not end the others."""
        substituted = formula
        for variable, _, value in chosen:
            substituted = substituted.replace(variable, str(value))
        try:
            return Result(int(compute(substituted)), formula, "".join(f"[{n}:{v}]" for _, n, v in chosen))
        except ZeroDivisionError:
            return self.failure(f"getValue  failed:{name} compute erro,formula:{substituted}.msg:{BY_ZERO}")

    def integers(self, element):
        if element.tag in ("StructEntry", "MaskedIntReg"):
            return self.bits(element)
        return self.words(element) if element.find("Value") is None else self.constants(element)

    def bits(self, element):
        """Here bit 0 is the least significant one, whatever the register's byte order."""
        register = self.register(element, [])
        length = self.length(register)
        one = text(element, "Bit")
        ends = [int(one)] * 2 if one is not None else [int(text(element, "LSB")), int(text(element, "MSB"))]
        results = []
        for address in self.addresses(register):
            first = self.first_word(self.camera.read_memory(address.value, length), length == 4)
            results.append(Result((first & (1 << max(ends) + 1) - 1) >> min(ends)))
        return results

    def length(self, register):
        """In bytes; nothing when it cannot be had. A formula that failed but gave exactly one value is enough."""
        written = text(register, "Length") or text(register, "pLength")
        if NUMBER.fullmatch(written):
            return string_to_integer(written)
        results = self.values(self.nodes[written])
        if results is None and len(self.leftover) == 1:
            results = self.leftover
        self.leftover = []
        return results[0].value if results else None

    def first_word(self, content, swap):
        first = struct.unpack("<I", content.ljust(4, b"\0")[:4])[0]
        return reversed_bytes(first) if swap else first

    def words(self, element):
        register = self.register(element, [])
        if register is not None:
            found = self.addresses(register)
            if found is None:
                return self.failure(f"getIntRegAddress failed:{register.get('Name')}")
            return [Result(self.first_word(self.camera.read_memory(a.value, 4), True), a.formula, a.variables)
                    for a in found]
        if element.tag == "IntSwissKnife":
            return self.values(element)
        if not text(element, "pValue"):
            return self.failure(f"getIntReg failed:{element.get('Name')}")
        return self.term(text(element, "pValue"))

    def constants(self, element):
        name = element.get("Name")
        selector = self.selected.get(name)
        if selector is None and element.find("Value").find("pSelected") is not None:
            selector = element
        if selector is None and not NUMBER.fullmatch(text(element, "Value")):
            return self.failure(f"getIntValue failed:{name} valuenode content is unsupport")
        if selector is None:
            return [Result(string_to_integer(text(element, "Value")))]
        if selector.tag == "Enumeration":
            return [Result(value) for value in self.camera.supported(selector.get("Name"))]
        low, high, step = self.camera.bounds(selector.get("Name"))
        return [Result(value) for value in range(low, high + 1, step)]


# ---- the export --------------------------------------------------------------------------------------------

class Export:
    def __init__(self):
        root = parse(DESCRIPTION / "emulator.xml")
        seed = json.loads((DESCRIPTION / "seed.json").read_text(encoding="utf-8"))
        self.camera = Camera(root, seed, bootstrap())
        self.log, self.lines, self.reasons = [], [], []
        self.index = Index(root)
        self.evaluator = Evaluator(self.index, self.camera, self.log)

    def run(self):
        self.lines += ['<?xml version="1.0" encoding="UTF-8"?>', f'<FeaturesFile version="{VERSION}">',
                       f"<DeviceFirmwareVersion>{self.camera.value('DeviceFirmwareVersion')}</DeviceFirmwareVersion>",
                       f"<DeviceModelName>{MODEL}</DeviceModelName>",
                       f"<BoardDeviceType>{self.camera.value('BoardDeviceType')}</BoardDeviceType>", "<Features>"]
        key = ""
        while True:  # a visit may add names behind the present one
            key = min((k for k in self.index.nodes if k > key), default=None)
            if key is None:
                break
            self.visit(self.index.nodes[key])
        self.lines += ["</Features>", "</FeaturesFile>"]

    def visit(self, element):
        name = element.get("Name", "")
        if name not in self.index.features:
            return
        shown = text(element, "Representation")
        rule = ("it is never exported" if name in NEVER else
                "it is in the list of skipped names" if name in SKIPPED else
                f"it is shown as {shown}" if shown in ("IPV4Address", "MACAddress") else
                "it is a MAC address" if shown == "HexNumber" and name == "GevMACAddress" else
                "it is a command" if element.tag == "Command" else "")
        if rule:
            self.reasons.append((name, element.tag, "left out: " + rule, []))
            return
        logged, written = len(self.log), len(self.lines)
        selectors = self.evaluator.is_selected(name)
        why = [f"selected by {', '.join(f'`{s}`' for s in selectors)}"] if selectors else []
        try:
            attempts = [self.registers] * bool(selectors) + [self.plain, self.registers]
            done = any(attempt(element, why) for attempt in attempts)
        except LeftOut:
            done = False
        outcome = "left out" if not done else "plain" if self.lines[written] == "<Feature>" else "registers"
        self.reasons.append((name, element.tag, outcome, why + [f"log: `{line}`" for line in self.log[logged:]]))

    def plain(self, element, why):
        camera, name, tag = self.camera, element.get("Name"), element.tag
        camera.trace.clear()
        try:
            if tag == "Boolean":
                value = "1" if camera.boolean(name) else "0"
            elif tag in ("Integer", "IntReg", "Enumeration"):
                value = str(camera.value(name))
            elif tag == "Float":  # read as a 32-bit float
                value = "%.6f" % struct.unpack("<f", struct.pack("<f", camera.value(name)))[0]
            elif tag == "StringReg":
                value = camera.value(name)
            else:
                why.append(f"no plain value: its kind is {tag}")
                return False
        except Refused as reason:
            why.append(f"no plain value: {reason}")
            return False
        why.append(f"plain value {value} from " + "; ".join(dict.fromkeys(camera.trace)))
        self.lines += ["<Feature>", f"<Name>{name}</Name>", f"<Type>{tag}</Type>", f"<Value>{value}</Value>",
                       "<Streamable>Yes</Streamable>", "</Feature>"]
        return True

    def registers(self, element, why):
        try:
            self.lines += self.block(element, why)
            return True
        except Failed as failure:
            self.log += failure.args
            why.append("the register attempt fails")
            return False

    def block(self, element, why):
        name, converters = element.get("Name"), []
        register = self.evaluator.register(element, converters)
        if register is None:
            raise Failed(f"Reg is empty failed:{name}")
        by = "" if text(register, "Length") else f" by `{text(register, 'pLength')}`"
        length = self.evaluator.length(register)
        if length is None:
            raise Failed(f"Reg{name} value length:{text(register, 'pLength')} is erro")
        if length == 0:
            why.append(f"length 0{by}: left out without a line in the log, and without another attempt")
            raise LeftOut()
        lines = [f'<ComplexFeature name="{name}" len="{length}" reg="{register.get("Name", "")}">']
        addresses = self.evaluator.addresses(register)
        shown = f"register `{register.get('Name')}`" if register.get("Name") else "a register without a name"
        why.append(f"{shown}, length {length}{by}, address {' + '.join(self.evaluator.terms)}")
        if not addresses:
            raise Failed(f"getIntRegAddress  failed:{name}")
        converter = self.converter(converters[-1], register) if converters else None
        if converter:
            why.append(f"behind converter `{converter[0]}`: {converter[1]}")
        for i, address in enumerate(addresses):
            words, content = self.read(name, address, length)
            line = (self.converted(name, converter, i, address, words[0], length == 4) if converter else
                    self.written(address, words, length == 4))
            why.append(f"0x{address.value:X}{' ' + address.variables if address.variables else ''}: {content}"
                       + (f"; `{self.formula}`" if converter else "") + " -> "
                       + re.sub(r"(,0){9,}", ",0,...,0", re.search(">(.*)<", line)[1]))
            lines.append(line)
        return lines + ["</ComplexFeature>"]

    def converter(self, element, register):
        """Its name, its formula, and its variables in the order of the file; the register itself has no values."""
        own = register.get("Name")
        variables = []
        for variable in element.findall("pVariable"):
            found = None
            if variable.text != own:
                found = self.evaluator.variables([variable])
                if found is None:
                    raise Failed()
                found = found[variable.get("Name")][1]
            variables.append((variable.get("Name"), found))
        if not text(element, "FormulaFrom") or not text(element, "FormulaTo") or not variables:
            raise Failed(f"getValue  failed:{element.get('Name')} no formula or variables")
        return element.get("Name"), text(element, "FormulaFrom"), variables

    def read(self, name, address, length):
        """The words of the register and what to tell of it. GigE Vision names no address off the grid of 4; what lies
        around it is read instead, and the middle of that becomes the first word with its halves exchanged."""
        a = address.value
        try:
            content = self.camera.read_memory(a, length)
        except Refused:
            self.log.append(f"Create RegAddress  failed:{name} addr:{a} formula:{address.formula} "
                            f"variables:{address.variables}")
            if (a - 2) % 4:
                raise Failed() from None
            around = self.camera.read_memory(a - 2, 4) + self.camera.read_memory(a + 2, 4)
            return ([exchanged(struct.unpack("<I", around[2:6])[0])],
                    f"cannot be read; bytes 2 to 5 of {around.hex(' ').upper()} from 0x{a - 2:X} on")
        content = content.ljust((length + 3) // 4 * 4, b"\0")
        shown = content.rstrip(b"\0").hex(" ").upper() if length > 8 else content[:length].hex(" ").upper()
        return list(struct.unpack(f"<{len(content) // 4}I", content)), shown if len(shown) < 60 else shown[:56] + " ..."

    def written(self, address, words, swap):
        if swap and address.value % 4:
            words = [exchanged(w) for w in words]
        content = ",".join(str(reversed_bytes(w) if swap else w) for w in words)
        return f'<RegValue address="{address.value}" variables="{address.variables}">{content}</RegValue>'

    def converted(self, name, converter, i, address, first, swap):
        converter_name, formula, variables = converter
        raw = reversed_bytes(first) if swap else first
        if address.value % 4:
            raw = exchanged(raw)
        for variable, values in variables:
            if values is None:
                formula = formula.replace(variable, "TO")
                continue
            place = 0 if len(variables) == 1 else i
            if place >= len(values):
                raise Failed(f"getValue  failed:{converter_name} out of size variables:{variable}")
            formula = formula.replace(variable, "%g" % values[place].value)
        self.formula = formula
        try:
            value = "%.6f" % compute(formula.replace("TO", str(raw)))
        except ZeroDivisionError:
            raise Failed(f"getValue  failed:{name} compute erro,formula:{escaped(formula)}.msg:{BY_ZERO}") from None
        return (f'<RegValue address="{address.value}" variables="{address.variables}" to="{raw}" '
                f'from="{escaped(formula)}">{value}</RegValue>')


# ---- the three files ---------------------------------------------------------------------------------------

MARK = "## Feature by feature\n"


def explained(reasons):
    lines = [MARK]
    for name, tag, outcome, why in reasons:
        lines.append(f"- **{name}** ({tag}): {outcome}.")
        lines += [f"  - {reason}" for reason in why]
    left_out = [name for name, _, outcome, _ in reasons if outcome == "left out"]
    lines += ["", f"Left out although no rule keeps them out beforehand: {', '.join(left_out)}."]
    return "\n".join(lines) + "\n"


def main():
    export = Export()
    export.run()
    explanation = HERE / "emulator_export.md"
    above = explanation.read_text(encoding="utf-8").split(MARK)[0] if explanation.exists() else ""
    files = {HERE / "emulator_export.fpk": "\r\n".join(export.lines),
             HERE / "emulator_export.log": "".join(line + "\n" for line in export.log),
             explanation: above + explained(export.reasons)}
    stale = [path for path, content in files.items()
             if not path.exists() or path.read_bytes() != content.encode("utf-8")]
    if "--write" in sys.argv[1:]:
        for path in stale:
            path.write_bytes(files[path].encode("utf-8"))
        return 0
    for path in stale:
        print(f"{path.name} is not what the rules give; --write writes it")
    return bool(stale)


if __name__ == "__main__":
    sys.exit(main())
