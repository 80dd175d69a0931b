#!/usr/bin/env python3
"""Holds both sides of GenTL against other programs' reading of the standard, installed into a folder of its own:
the emulated producer is used by another consumer, another producer's cameras are used by the camera library, and the
numbers of our declarations are those of the other ones.
    gentl_reference_test.py CAMERA_EMULATOR PRODUCER GENTL_ANSWERS DECLARATIONS FOLDER"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import time

sys.dont_write_bytecode = True  # the sources' folder stays as it is
here = pathlib.Path(__file__).parent.parent
sys.path[1:1] = [str(here), str(here / "nodes_reference")]
# pylint: disable=wrong-import-position
from nodes_reference_test import OWN_REPAIRS
from yardstick import RELEASE, install

failures = []

# Our enumeration, theirs, what theirs begin with, and what is called differently.
NUMBERS = [
    ("DataType", "INFO_DATATYPE_LIST", "INFO_DATATYPE_", {"TypeSize": "SIZET"}),
    ("SystemInfo", "TL_INFO_CMD_LIST", "TL_INFO_",
     {"SystemType": "TLTYPE", "SystemFileName": "NAME", "SystemPath": "PATHNAME", "SystemDisplayName": "DISPLAYNAME",
      "SystemEncoding": "CHAR_ENCODING", "SystemVersionMajor": "GENTL_VER_MAJOR",
      "SystemVersionMinor": "GENTL_VER_MINOR"}),
    ("InterfaceInfo", "INTERFACE_INFO_CMD_LIST", "INTERFACE_INFO_",
     {"InterfaceDisplayName": "DISPLAYNAME", "InterfaceType": "TLTYPE"}),
    ("DeviceInfo", "DEVICE_INFO_CMD_LIST", "DEVICE_INFO_",
     {"DeviceType": "TLTYPE", "DeviceDisplayName": "DISPLAYNAME", "DeviceUserName": "USER_DEFINED_NAME"}),
    ("AccessStatus", "DEVICE_ACCESS_STATUS_LIST", "DEVICE_ACCESS_STATUS_",
     {"StatusReadWrite": "READWRITE", "StatusReadOnly": "READONLY", "StatusNoAccess": "NOACCESS",
      "StatusOpenReadWrite": "OPEN_READWRITE", "StatusOpenReadOnly": "OPEN_READONLY"}),
    ("AccessFlags", "DEVICE_ACCESS_FLAGS_LIST", "DEVICE_ACCESS_", {"AccessReadOnly": "READONLY"}),
    ("UrlInfo", "URL_INFO_CMD_LIST", "URL_INFO_",
     {"UrlText": "URL", "UrlSchemaMajor": "SCHEMA_VER_MAJOR", "UrlSchemaMinor": "SCHEMA_VER_MINOR",
      "UrlFileMajor": "FILE_VER_MAJOR", "UrlFileMinor": "FILE_VER_MINOR", "UrlFileSubMinor": "FILE_VER_SUBMINOR",
      "UrlAddress": "FILE_REGISTER_ADDRESS", "UrlSize": "FILE_SIZE", "UrlFileName": "FILENAME"}),
    ("PortInfo", "PORT_INFO_CMD_LIST", "PORT_INFO_",
     {"PortType": "TLTYPE", "PortReadable": "ACCESS_READ", "PortWritable": "ACCESS_WRITE",
      "PortNotAvailable": "ACCESS_NA", "PortNotImplemented": "ACCESS_NI", "PortName": "PORTNAME"}),
    ("EventType", "EVENT_TYPE_LIST", "EVENT_", {}),
    ("EventDataInfo", "EVENT_DATA_INFO_CMD_LIST", "EVENT_DATA_", {"EventDataId": "ID", "EventDataValue": "VALUE"}),
    ("Error", "GC_ERROR_LIST", "GC_ERR_", {}),
]


def expect(what, is_true, *details):
    if not is_true:
        failures.append(what)
        print("FAILED:", what, *details)


def capitals(name):
    """"OpenReadOnly" -> "OPEN_READ_ONLY" """
    return re.sub(r"(?<!^)(?=[A-Z])", "_", name).upper()


def ours(text, enumeration):
    """Names and numbers of one enumeration of our declarations."""
    head = "enum : Error" if enumeration == "Error" else f"enum {enumeration} : int32_t"
    body = re.search(rf"{head}\n\{{(.*?)\}};", text, re.DOTALL).group(1)
    return {name: int(number) for name, number in re.findall(r"(\w+) = (-?\d+)", body)}


def check_numbers(gentl, declarations):
    text = pathlib.Path(declarations).read_text(encoding="utf-8")
    compared = 0
    for enumeration, theirs, prefix, other_names in NUMBERS:
        numbers = getattr(gentl, theirs)
        for name, number in ours(text, enumeration).items():
            their_name = prefix + other_names.get(name, capitals(re.sub(r"^[A-Z][a-z0-9]+", "", name)))
            if name == "Success":
                their_name = "GC_ERR_SUCCESS"
            theirs_is = int(getattr(numbers, their_name)) if hasattr(numbers, their_name) else None
            expect(f"{name} is {their_name}", theirs_is == number, theirs_is, number)
            compared += 1
    print(compared, "numbers compared")


class EmulatedCamera:
    """A camera behind the emulated grabber, while it is entered."""
    def __init__(self, emulator, folder):
        self.socket = str(folder / "peer.socket")
        ready = folder / "ready"
        self.process = subprocess.Popen([emulator, "--socket", self.socket, "--serial", "PEER1", "--layer", "CXP",
                                         "--ready-file", str(ready)], stdout=subprocess.DEVNULL)
        end = time.monotonic() + 60
        while not ready.exists() and self.process.poll() is None and time.monotonic() < end:
            time.sleep(0.02)

    def __enter__(self):
        os.environ["CAMERA_EMULATOR_GENTL"] = self.socket
        return self

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait()


def open_device(gentl, producer, path):
    producer.open(path)
    system = producer.create_system()
    system.open()
    expect("the system's vendor", system.vendor == "Emulated cameras", system.vendor)
    system.update_interface_info_list(1000)
    interface = system.interface_info_list[0].create_interface()
    interface.open()
    interface.update_device_info_list(1000)
    info = interface.device_info_list[0]
    expect("the device's texts", (info.id_, info.model, info.serial_number, info.tl_type) ==
           ("EMU-PEER1", "EMU-1", "PEER1", "CXP"), info.id_, info.model, info.serial_number, info.tl_type)
    device = info.create_device()
    device.open(gentl.DEVICE_ACCESS_FLAGS_LIST.DEVICE_ACCESS_EXCLUSIVE)
    return system, interface, device


def nodes_over(genapi, port, text):
    class RemotePort(genapi.AbstractPort):
        """The way of the other consumer's node map to its port."""
        def read(self, address, length):
            return port.read(address, length)[1]

        def write(self, address, data):
            port.write(address, bytes(data))

        def is_open(self):
            return True

        def get_access_mode(self):
            return genapi.EAccessMode.RW

    nodes = genapi.NodeMap()
    nodes.load_xml_from_string(text)
    nodes.connect(RemotePort(), "Device")
    return nodes


def check_our_producer(gentl, genapi, emulator, path):
    with tempfile.TemporaryDirectory() as folder, EmulatedCamera(emulator, pathlib.Path(folder)):
        producer = gentl.GenTLProducer.create_producer()
        system, interface, device = open_device(gentl, producer, path)
        port = device.remote_port
        url = port.url_info_list[0]
        _, raw = port.read(url.file_register_address, url.file_size)
        expect("the description", raw.startswith(b"<?xml"), url.url, raw[:20])
        text = raw.decode()
        for pattern, replacement in OWN_REPAIRS:
            text = re.sub(pattern, replacement, text, flags=re.DOTALL)
        port.write(0x20000, b"abcd")
        expect("written memory is read", port.read(0x20000, 4)[1] == b"abcd")
        try:
            nodes = nodes_over(genapi, port, text)
            nodes.Width.value = 640
            expect("a feature that was set", nodes.Width.value == 640)
        except gentl.GenericException as failure:
            expect("features by the other's node map", False, failure)
        for address, kind in ((0x44, "AccessDenied"), (0xFFFFFFFFFFFFFFFE, "InvalidAddress")):
            try:
                port.write(address, b"\0\0\0\0")
                expect(f"a write to {address:#x} is refused", False)
            except gentl.GenericException as failure:
                expect(f"why a write to {address:#x} is refused", kind in type(failure).__name__, failure)
        device.close()
        interface.close()
        system.close()
        producer.close()


def check_other_producer(answers, place):
    """Three cameras of one model, each in its own colour."""
    os.environ["GENICAM_GENTL64_PATH"] = str(place)
    with tempfile.TemporaryDirectory() as folder:
        done = subprocess.run([answers, folder], capture_output=True, text=True, timeout=120, check=False)
        cameras = [line.split("|") for line in done.stdout.splitlines()]
        expect("three cameras of the other producer", done.returncode == 0 and len(cameras) == 3, done)
        for layer, model, serial, interface, availability, status, width, error in cameras:
            print("the other producer's camera:", layer, model, serial, interface, "width", width)
            expect("a free camera of a maker's own layer", (layer, availability) == ("Custom", "1"), layer,
                   availability)
            expect("its features are read, written, saved and loaded", status == "0", status, error)
            bag = (pathlib.Path(folder) / f"{serial}.bag").read_text(encoding="latin-1")
            expect("its features are in the bag", f"Width\t{width}" in bag, bag)


def main():
    emulator, producer, answers, declarations, folder = sys.argv[1:]
    reason = install(folder)
    if reason:
        print(f"SKIPPED: {reason}")
        return 0
    from genicam import genapi, gentl
    check_numbers(gentl, declarations)
    check_our_producer(gentl, genapi, emulator, producer)
    check_other_producer(answers, pathlib.Path(folder) / RELEASE / "genicam")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
