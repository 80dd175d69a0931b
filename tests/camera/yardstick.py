"""GenApi's reference implementation, put into a folder of its own for the tests that measure by it."""
import pathlib
import platform
import subprocess
import sys

RELEASE = "genicam==1.6.0"
LONGEST_INSTALL = 100  # seconds


def install(folder):
    """Makes `import genicam` work. Why the reference cannot be had, or an empty text."""
    if platform.python_implementation() != "CPython" or sys.version_info[:2] != (3, 11):
        return f"the reference needs CPython 3.11, this is {platform.python_version()}"
    place = pathlib.Path(folder) / RELEASE
    if not (place / "genicam").is_dir():
        command = [sys.executable, "-m", "pip", "install", "--quiet", "--disable-pip-version-check", "--target",
                   str(place), RELEASE]
        try:
            subprocess.run(command, capture_output=True, text=True, timeout=LONGEST_INSTALL, check=True)
        except subprocess.TimeoutExpired:
            return f"pip did not get {RELEASE} within {LONGEST_INSTALL} s"
        except subprocess.CalledProcessError as failure:
            return f"pip does not install {RELEASE}: {(failure.stderr.strip().splitlines() or ['no reason'])[-1]}"
    sys.path.insert(0, str(place))
    try:
        import genicam.genapi  # needs Python as a shared library
    except ImportError as failure:
        return f"{RELEASE} does not load here: {failure}"
    return ""
