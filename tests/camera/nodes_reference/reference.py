"""GenApi's reference implementation, asked what nodes_dump has answered: the same description over the same memory.
Its nodes may take the whole process down, so the questions are asked in a child process."""
import itertools
import os
import pickle
import re
import traceback

READABLE, WRITABLE = (3, 4), (2, 4)  # EAccessMode: RO and RW, WO and RW
DIED = {"died": True}
UNTOLD = "bytes that the binding cannot hand out"


class Memory:
    """The rule is that of SeededMemory.h."""

    def __init__(self):
        self.seed = 0
        self.written = {}
        self.writes = []
        self.last_read = None

    def byte(self, address):
        if address in self.written:
            return self.written[address]
        if self.seed == 0 or self.seed == 1 and address % 4 != 3:
            return 0
        mixed = (address * 2654435761 + self.seed * 40503) % 2**64 >> 20 & 0xFF
        return mixed % 5 if self.seed == 1 else mixed

    def read(self, address, length):
        address %= 2**64
        self.last_read = [address, length]
        return bytes(self.byte((address + i) % 2**64) for i in range(length))

    def write(self, address, data):
        address %= 2**64
        self.writes.append([address, bytes(data).hex()])
        for i, byte in enumerate(bytes(data)):
            self.written[(address + i) % 2**64] = byte

    def take_writes(self):
        taken, self.writes = self.writes, []
        self.written.clear()
        return taken


def without_caches(xml):
    """Every register is asked again each time: the memory is put back after each write behind the nodes' back."""
    xml = re.sub(r"<Cachable>[^<]*</Cachable>", "", xml)
    return re.sub(r"(<pPort>[^<]*</pPort>)", r"\1<Cachable>NoCache</Cachable>", xml)


class Reference:
    def __init__(self, genapi, xml):
        """Raises when the reference refuses the description."""
        self.genapi = genapi
        self.memory = Memory()
        self.map = genapi.NodeMap()
        self.map.load_xml_from_string(without_caches(xml))
        self.port = self._port(genapi.EAccessMode.RW)
        self.map.connect(self.port, "Device")
        self.is_worn = False  # a node keeps what was written to it
        self.nodes = {node.node.name: node for node in self.map.nodes}

    def _port(self, mode):
        memory = self.memory

        class Port(self.genapi.AbstractPort):
            def get_access_mode(self):
                return mode

            def read(self, address, length):
                return memory.read(address, length)

            def write(self, address, data):
                memory.write(address, data)

        return Port()

    def answers(self, questions):
        """One for each line of the dump, in its order; None where the reference has no such node. Each memory is met
        by nodes that nobody has written to."""
        answers = []
        for _, of_one_memory in itertools.groupby(questions, key=lambda question: question["seed"]):
            answers += self._answers_of_children(list(of_one_memory))
        return answers

    def _answers_of_children(self, questions):
        answers = []
        while len(answers) < len(questions):
            given, died = self._answers_of_child(questions[len(answers):])
            answers += given + [DIED] * died
        return answers

    def _answers_of_child(self, questions):
        """As many as nodes that are as they were can give; whether the reference died of the next one."""
        reading, writing = os.pipe()
        child = os.fork()
        if child == 0:
            with os.fdopen(writing, "wb") as pipe:
                self._answer_into(pipe, questions)
        os.close(writing)
        answers = []
        with os.fdopen(reading, "rb") as pipe:
            while True:
                try:
                    answers.append(pickle.load(pipe))
                except (EOFError, pickle.UnpicklingError):
                    break
        _, status = os.waitpid(child, 0)
        if os.WIFEXITED(status) and os.WEXITSTATUS(status) != 0:
            raise RuntimeError("the questions themselves fail")
        return answers, os.WIFSIGNALED(status)

    def _answer_into(self, pipe, questions):
        try:
            for question in questions:
                pickle.dump(self._answer(question), pipe)
                pipe.flush()
                if self.is_worn:
                    break
        except BaseException:  # pylint: disable=broad-except
            traceback.print_exc()
            os._exit(1)
        os._exit(0)

    def _answer(self, question):
        self.memory.seed = question["seed"]
        node = self.nodes.get(question["name"])
        if node is None:
            return None
        return self._written(node, question["write"]) if "write" in question else self._state(node)

    # ---- one node ----

    def _attempt(self, question):
        try:
            return question()
        except (self.genapi.GenericException, RuntimeError, ValueError, OverflowError, MemoryError) as failure:
            place = re.search(r"thrown in node '(\w+)'", str(failure))
            return {"refused": type(failure).__name__ + ": " + str(failure).split(" : ")[0],
                    "node": place.group(1) if place else ""}

    def _text(self, node):
        api = self.genapi
        if node.get_access_mode() not in READABLE:
            return {"refused": "not readable"}
        if isinstance(node, api.IBoolean):
            return "1" if node.value else "0"
        if isinstance(node, api.IString):
            return self._characters(node)
        if isinstance(node, api.IEnumeration):
            return node.to_string()
        if isinstance(node, (api.IInteger, api.IFloat)):
            return node.value
        return None

    @staticmethod
    def _characters(node):
        try:
            return node.value.encode("utf-8").hex()
        except UnicodeDecodeError:
            return UNTOLD

    def _state(self, node):
        api = self.genapi
        state = {"mode": self._attempt(lambda: int(node.get_access_mode()))}
        state["type"] = type(node).__name__
        self.memory.last_read = None
        state["text"] = self._attempt(lambda: self._text(node))
        state["read"] = self.memory.last_read
        if isinstance(node, (api.IInteger, api.IFloat)):
            state["minimum"] = self._attempt(lambda: node.min)
            state["maximum"] = self._attempt(lambda: node.max)
        if isinstance(node, api.IInteger):
            state["increment"] = self._attempt(lambda: node.inc)
        if isinstance(node, api.IEnumeration):
            state["number"] = self._attempt(lambda: self._number(node))
            state["entries"] = self._attempt(lambda: self._entries(node))
        if isinstance(node, (api.IInteger, api.IRegister)):
            state["address"] = self._attempt(lambda: node.address)
            state["length"] = self._attempt(lambda: node.length)
        return state

    @staticmethod
    def _number(node):
        """In the 32 bits that the library's record has."""
        if node.get_access_mode() not in READABLE:
            return {"refused": "not readable"}
        return node.get_int_value() % 2**32

    @staticmethod
    def _entries(node):
        return [entry.node.name for entry in node.entries if entry.get_access_mode() in READABLE]

    # ---- writing ----

    def _set(self, node, value):
        api = self.genapi
        if isinstance(node, api.ICommand):
            node.execute()
        elif isinstance(node, api.IEnumeration):
            node.set_int_value(value)
        else:
            node.value = value

    def _written(self, node, value):
        if isinstance(node, self.genapi.IFloat):
            value = float(value)
        before = self._attempt(lambda: self._text(node))
        failure = self._attempt(lambda: self._set(node, value))
        wire = self.memory.take_writes()
        after = self._attempt(lambda: self._text(node))
        if after != before and not (isinstance(before, (str, int, float)) and self._is_restored(node, before)):
            self.is_worn = True
        return {"refused": failure or "", "wire": wire, "after": after}

    def _is_restored(self, node, before):
        self._attempt(lambda: self._restore(node, before))
        self.memory.take_writes()
        return self._attempt(lambda: self._text(node)) == before

    def _restore(self, node, before):
        api = self.genapi
        if isinstance(node, api.IEnumeration):
            node.from_string(before)
        elif isinstance(node, api.IString):
            node.value = bytes.fromhex(before).decode("utf-8")
        else:
            node.value = before == "1" if isinstance(node, api.IBoolean) else before
