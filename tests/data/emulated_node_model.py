"""What the emulator's own camera answers when its nodes are read one by one: a small model of its registers
and of GenApi's nodes, by the standard and without the camera library. Used by work_out_emulator_export.py."""
import json
import re
import struct
import xml.etree.ElementTree as ElementTree

REGISTERS = ("Register", "IntReg", "MaskedIntReg", "StructReg", "StringReg", "FloatReg")


class Refused(Exception):
    """The camera or the node engine does not answer; the line itself is well."""


# ---- formulas ----------------------------------------------------------------------------------------------

TOKEN = re.compile(r"\s*(0[xX][0-9A-Fa-f]+|\d+\.?\d*(?:[eE][+-]?\d+)?|[A-Za-z_]\w*"
                   r"|\*\*|<<|>>|<>|<=|>=|&&|\|\||.)")
BINARY = [  # from the loosest to the tightest
    {"||": lambda a, b: int(bool(a) or bool(b))},
    {"&&": lambda a, b: int(bool(a) and bool(b))},
    {"|": lambda a, b: int(a) | int(b)},
    {"^": lambda a, b: int(a) ^ int(b)},
    {"&": lambda a, b: int(a) & int(b)},
    {"=": lambda a, b: int(a == b), "<>": lambda a, b: int(a != b)},
    {"<": lambda a, b: int(a < b), ">": lambda a, b: int(a > b),
     "<=": lambda a, b: int(a <= b), ">=": lambda a, b: int(a >= b)},
    {"<<": lambda a, b: int(a) << int(b), ">>": lambda a, b: int(a) >> int(b)},
    {"+": lambda a, b: a + b, "-": lambda a, b: a - b},
    {"*": lambda a, b: a * b, "/": lambda a, b: a / b, "%": lambda a, b: a % b},
]


def compute(formula, variables=None):
    """The value of a SwissKnife formula. Names come from `variables`."""
    tokens = [t for t in TOKEN.findall(formula.strip())] + [""]
    position = [0]

    def take(wanted=None):
        token = tokens[position[0]]
        if wanted is not None and token != wanted:
            raise ValueError(f"{wanted!r} expected in {formula!r}, not {token!r}")
        position[0] += 1
        return token

    def choice():
        condition = binary(0)
        if tokens[position[0]] != "?":
            return condition
        take("?")
        yes = choice()
        take(":")
        no = choice()
        return yes if condition else no

    def binary(level):
        if level == len(BINARY):
            return power()
        left = binary(level + 1)
        while tokens[position[0]] in BINARY[level]:
            left = BINARY[level][take()](left, binary(level + 1))
        return left

    def power():
        base = unary()
        if tokens[position[0]] != "**":
            return base
        take("**")
        return base ** power()

    def unary():
        token = take()
        if token in ("-", "+", "~"):
            value = unary()
            return {"-": -value, "+": value, "~": ~int(value)}[token]
        if token == "(":
            value = choice()
            take(")")
            return value
        if re.match(r"0[xX]", token):
            return int(token, 16)
        if re.match(r"\d+$", token):
            return int(token)
        if re.match(r"\d", token):
            return float(token)
        return (variables or {})[token]

    value = choice()
    take("")
    return value


# ---- the description ---------------------------------------------------------------------------------------

def text(element, tag):
    """The text of the first child with this tag; nothing without one."""
    child = element.find(tag)
    return None if child is None else "".join(child.itertext())


def number_of(written):
    return int(written, 0)


def parse(path):
    """The root element. Tags are those of the file: no prefixes, no namespaces."""
    return ElementTree.fromstring(re.sub(r'\sxmlns="[^"]*"', "", path.read_text(encoding="utf-8")))


# ---- the camera --------------------------------------------------------------------------------------------

class Camera:
    def __init__(self, root, seed, bootstrap):
        self.parents = {child: parent for parent in root.iter() for child in parent}
        self.nodes = {e.get("Name"): e for e in root.iter()
                      if e.get("Name") and e.tag not in ("EnumEntry", "pVariable")}
        self.memory = {}
        self.trace = []  # what the last reads met, for the explanation
        for address, content in bootstrap.items():
            self.poke(address, content)
        for name, value in seed["nodes"].items():
            self.write(name, value)
        for address, content in seed["memory"].items():
            self.poke(number_of(address), bytes.fromhex(content))

    # ---- registers

    def poke(self, address, content):
        self.memory.update({address + i: byte for i, byte in enumerate(content)})

    def peek(self, address, length):
        return bytes(self.memory.get(address + i, 0) for i in range(length))

    def read_memory(self, address, length):
        if address % 4:
            raise Refused(f"GigE Vision names no register at 0x{address:X}")
        return self.peek(address, length)

    def register(self, element):
        """The element that has the address: a StructEntry's is the StructReg around it."""
        return self.parents[element] if element.tag == "StructEntry" else element

    def address(self, element):
        """The sum of all address parts at the selectors' present values."""
        total = 0
        for child in self.register(element):
            if child.tag == "Address":
                total += number_of(child.text)
            elif child.tag == "pAddress":
                total += self.value(child.text)
        return total

    def length(self, element):
        written = text(self.register(element), "Length")
        return number_of(written) if written else self.value(text(self.register(element), "pLength"))

    def property(self, element, tag, default):
        """What a StructEntry does not say itself its StructReg says for it."""
        own = text(element, tag)
        return own if own is not None else text(self.register(element), tag) or default

    def field(self, element):
        """Where the number lies in the register's word: byte order, lowest bit, number of bits."""
        big = self.property(element, "Endianess", "LittleEndian") == "BigEndian"
        bits = 8 * self.length(element)
        if element.tag == "IntReg":
            return big, 0, bits
        one = text(element, "Bit")
        ends = [one, one] if one is not None else [text(element, "LSB"), text(element, "MSB")]
        # In big-endian registers the bits are counted from the most significant one.
        places = sorted(bits - 1 - int(end) if big else int(end) for end in ends)
        return big, places[0], places[1] - places[0] + 1

    def read_integer(self, element):
        address, length = self.address(element), self.length(element)
        content = self.read_memory(address, length)
        big, shift, bits = self.field(element)
        value = int.from_bytes(content, "big" if big else "little") >> shift & ((1 << bits) - 1)
        if self.property(element, "Sign", "Unsigned") == "Signed" and value >> (bits - 1):
            value -= 1 << bits
        part = "" if bits == 8 * length else f" >> {shift} & 0x{(1 << bits) - 1:X}"
        self.trace.append(f"`{element.get('Name')}` 0x{address:X} = {content.hex(' ').upper()}{part}")
        return value

    # ---- nodes

    def readable(self, name):
        element = self.nodes[name]
        for condition in ("pIsImplemented", "pIsAvailable"):
            reference = text(element, condition)
            if reference and not self.value(reference):
                raise Refused(f"`{name}` has {condition} `{reference}`, which is 0")
        if self.property(element, "AccessMode", "") == "WO":
            raise Refused(f"`{name}` is write-only")

    def value(self, name):
        """The number or text that the node stands for now."""
        self.readable(name)
        element = self.nodes[name]
        tag, value, reference = element.tag, text(element, "Value"), text(element, "pValue")
        if tag in ("IntReg", "MaskedIntReg", "StructEntry"):
            return self.read_integer(element)
        if tag == "FloatReg":
            address = self.address(element)
            content = self.read_memory(address, self.length(element))
            self.trace.append(f"`{name}` 0x{address:X} = {content.hex(' ').upper()}")
            return struct.unpack(">f" if len(content) == 4 else ">d", content)[0]
        if tag == "StringReg":
            address = self.address(element)
            content = self.read_memory(address, self.length(element))
            self.trace.append(f"the text at 0x{address:X}")
            return content.split(b"\0")[0].decode()
        if tag in ("SwissKnife", "IntSwissKnife", "Converter", "IntConverter"):
            return self.formula(element)
        if value is not None:
            self.trace.append(f"constant {element.find('Value').text} of `{name}`")
            return number_of(element.find("Value").text)
        return self.value(reference)

    def formula(self, element):
        variables = {v.get("Name"): self.value(v.text) for v in element.findall("pVariable")}
        formula = text(element, "Formula")
        if formula is None:
            formula = text(element, "FormulaFrom")
            variables["TO"] = self.value(text(element, "pValue"))
        result = compute(formula, variables)
        self.trace.append(f"`{element.get('Name')}`: {formula}")
        return int(result) if element.tag.startswith("Int") else result

    # ---- what an application asks for

    def boolean(self, name):
        self.readable(name)
        on = number_of(text(self.nodes[name], "OnValue") or "1")
        return self.value(text(self.nodes[name], "pValue")) == on

    def supported(self, name):
        """The values of an enumeration's entries that are there, in the order of the file."""
        return [number_of(text(entry, "Value")) for entry in self.nodes[name].findall("EnumEntry")
                if all(self.value(condition.text) for condition in entry
                       if condition.tag in ("pIsImplemented", "pIsAvailable"))]

    def bounds(self, name):
        """Minimum, maximum and increment of an integer that has them."""
        element = self.nodes[name]
        return tuple(number_of(text(element, tag) or default)
                     for tag, default in (("Min", ""), ("Max", ""), ("Inc", "1")))

    def write(self, name, value):
        """A seed. It goes to the register behind the node, whatever the node's access."""
        element = self.nodes[name]
        if element.tag == "Enumeration" and isinstance(value, str):
            value = number_of(text(element.find(f"EnumEntry[@Name='{value}']"), "Value"))
        if element.tag == "Boolean":
            value = number_of(text(element, "OnValue" if value else "OffValue") or str(int(value)))
        if element.tag not in REGISTERS + ("StructEntry",):
            return self.write(text(element, "pValue"), value)
        address, length = self.address(element), self.length(element)
        if element.tag == "FloatReg":
            return self.poke(address, struct.pack(">f" if length == 4 else ">d", value))
        if element.tag == "StringReg":
            return self.poke(address, value.encode().ljust(length, b"\0"))
        big, shift, bits = self.field(element)
        order = "big" if big else "little"
        mask = ((1 << bits) - 1) << shift
        word = int.from_bytes(self.peek(address, length), order) & ~mask | int(value) << shift & mask
        return self.poke(address, word.to_bytes(length, order))
