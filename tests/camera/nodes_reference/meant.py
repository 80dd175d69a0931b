"""The differences between the camera library and the reference that are meant, each with its reason. A difference that
no row takes fails the test, and so does a row that takes none in the two descriptions that are always compared."""
import collections
import re

from comparison import UNDEFINED, refused

Row = collections.namedtuple("Row", "name reason takes")

LARGEST = (2**63 - 1, -(2**63), 1.7976931348623157e+308, -1.7976931348623157e+308)


def says(difference, *words):
    theirs = difference.theirs.get("refused", "") if isinstance(difference.theirs, dict) else str(difference.theirs)
    return any(word in theirs for word in words)


def without_slope(difference):
    return any("<Slope>" not in converter for converter in
               re.findall(r"<IntConverter .*?</IntConverter>", difference.source, re.DOTALL))


def is_name_of_same(difference):
    """Whether both are names of entries, and of one number."""
    entries = {name: int(value, 0) for name, value in re.findall(
        r'<EnumEntry Name="(\w+)".*?<Value>(\w+)</Value>', difference.source, re.DOTALL)}
    return entries.get(difference.ours, "?") == entries.get(difference.theirs)


def looks_like_another(difference):
    """Whether another entry looks like the written one."""
    values = {int(text, 0) for text in re.findall(r"<Value>(\w+)</Value>", difference.source)}
    return sum(value % 2**32 == difference.write % 2**32 for value in values) > 1


ROWS = [
    Row("category",
        "A category is a heading. It is there whatever it lists, and costs no request.",
        lambda d: d.aspect == "mode" and d.type == "ICategory"),
    Row("port",
        "A port has no value of its own: nobody asks for its mode. The reference tells which ones are connected.",
        lambda d: d.aspect == "mode" and d.type == "IPort"),
    Row("name of a formula inside a register",
        "It has a name and a value as any other; the reference hides it.",
        lambda d: d.aspect == "node"),
    Row("boolean that is neither",
        "What is not the value for true is false, as every reader of these features has taken it; the reference "
        "throws and hides a whole switch because of one odd bit.",
        lambda d: d.aspect == "value" and d.type == "IBoolean" and says(d, "is neither true")),
    Row("enumeration of no entry",
        "The number is what the camera holds, and a feature bag that has it can be compared; the reference throws.",
        lambda d: d.type == "IEnumeration" and d.aspect in ("value", "after") and says(d, "InvalidArgument")),
    Row("infinite result",
        "A formula whose result is no number is an error; the reference hands out infinities.",
        lambda d: d.aspect in ("value", "minimum", "maximum") and refused(d.ours) and says(d, "inf", "nan")),
    Row("branch that is not taken",
        "(D = 0) ? 7 : (100 / D) is 7; the reference divides all the same, and throws.",
        lambda d: d.aspect == "value" and not refused(d.ours) and says(d, "LogicalError")
        or d.aspect == "refusal" and not d.ours and says(d, "LogicalError") and says(d, "_ConvertTo")),
    Row("converted end that is no number",
        "An end that the formula cannot convert leaves the type's limit; the reference throws, and the feature cannot "
        "be set at all.",
        lambda d: d.aspect in ("minimum", "maximum") and not refused(d.ours)
        and says(d, "_ConvertFrom", "out of integer range")),
    Row("writing where an end cannot be converted",
        "The same, in writing.",
        lambda d: d.aspect == "refusal" and not d.ours and says(d, "LogicalError") and says(d, "_ConvertFrom")),
    Row("converter of one value",
        "A formula that is worth the same at both ends (it reads the register by a variable of its own) tells where "
        "the feature stands and not where it may go; the reference lets it stay there only.",
        lambda d: d.aspect in ("minimum", "maximum") and "onverter " in d.source and d.ours in LARGEST
        and not refused(d.theirs)),
    Row("writing a converter of one value",
        "The same, in writing, where the feature has bounds of its own.",
        lambda d: d.aspect == "refusal" and not d.ours and "onverter " in d.source and says(d, "must be")),
    Row("integer converter without a slope",
        "The schema's default is Automatic; the reference tells 0 and 0, whatever the formula.",
        lambda d: d.aspect in ("minimum", "maximum") and without_slope(d) and d.theirs == 0),
    Row("increment of zero",
        "There is no step of 0: it is told as 1.",
        lambda d: d.aspect == "increment" and d.ours == 1 and d.theirs == 0),
    Row("writing with an increment of zero",
        "The reference dies, or throws; ours takes the step for 1.",
        lambda d: d.aspect == "refusal" and not d.ours and says(d, "died", "Increment must be larger")),
    Row("write-only bit field",
        "Its neighbours cannot be read and are written as zeros; the reference cannot write it.",
        lambda d: d.aspect == "refusal" and not d.ours and says(d, "Node is not readable")),
    Row("bit field as wide as its register",
        "The reference takes its own mask for a maximum of -1 and writes nothing.",
        lambda d: "MaskedIntReg" in d.source and (d.aspect == "maximum" and d.theirs == -1
                                                  or d.aspect == "refusal" and says(d, "smaller than Max = -1."))),
    Row("number register of a length that no number has",
        "Length and bounds are told as they are written; reading and writing are refused alike.",
        lambda d: d.aspect in ("length", "minimum", "maximum") and says(d, "than Max = 8", "than Min = 4")),
    Row("entry that cannot tell whether it is there",
        "It is left out and cannot be set; the reference hides all the other entries with it, and sets it.",
        lambda d: d.type == "IEnumEntry" and d.ours == UNDEFINED
        or d.type == "IEnumeration" and (d.aspect == "entries" and refused(d.theirs)
                                         or d.aspect == "refusal" and d.ours and not d.theirs)),
    Row("address that a value outside its range leads to",
        "The camera decides where its selectors stand; the reference reads there but does not write.",
        lambda d: d.aspect == "refusal" and not d.ours and says(d, "must be", "not readable")
        and d.theirs["node"] and f'Name="{d.theirs["node"]}"' not in d.source),
    Row("number beyond 64 bits",
        "An integer formula whose result does not fit is an error, and with it the bounds that it is one of; the "
        "reference goes on with other numbers.",
        lambda d: d.type in ("IInteger", "IRegister") and refused(d.ours) and isinstance(d.theirs, int)
        or d.type == "IInteger" and d.aspect == "refusal" and d.ours and abs(d.write) >= 2**62),
    Row("variable called as a constant",
        "What a description declares is what it means; the reference takes e for 2.718...",
        lambda d: d.aspect == "value" and re.search(r'<pVariable Name="(e|E|pi|PI)"', d.source)),
    Row("formula over an enumeration of no entry",
        "Its number is the value; the reference throws, and where the formula is a lock it then tells read/write of "
        "what is locked and of what the lock was asked for, formulas among them.",
        lambda d: says(d, "NULL pointer") or d.aspect == "mode" and (d.ours, d.theirs) == (3, 4)
        and ("nife " in d.source or "<pIsLocked>" in d.source or "onverter " in d.source)),
    Row("step beyond the maximum",
        "The nearest step that there is; the reference refuses what lies nearer to the one that there is not, though "
        "it tells that the value is in range.",
        lambda d: d.aspect == "refusal" and d.type == "IFloat" and not d.ours and says(d, "smaller than Max")),
    Row("increment without a minimum",
        "It counts from 0 and not from the lowest number of the type, where no value would be a round one.",
        lambda d: d.aspect in ("refusal", "wire") and "<Inc>" in d.source and "Min>" not in d.source),
    Row("enumeration beyond 32 bits",
        "The library's record keeps 32 bits: what does not fit, or looks like another entry, is refused.",
        lambda d: d.type == "IEnumeration" and (d.aspect == "number" and refused(d.ours)
                                                or d.aspect == "refusal" and d.ours and looks_like_another(d))),
    Row("name of entries of one number",
        "The first one that is available counts; the reference names the first one, be it not implemented at all.",
        lambda d: d.type == "IEnumeration" and d.aspect in ("value", "after") and is_name_of_same(d)),
    Row("value that a copy refuses",
        "Nothing is written; the reference writes what stands before it.",
        lambda d: d.aspect == "wire" and "<pValueCopy>" in d.source and d.ours == []),
    Row("text of no length",
        "There is nothing to be sent; the reference writes no bytes at that address.",
        lambda d: d.aspect == "wire" and d.ours == [] and all(data == "" for _, data in d.theirs)),
    Row("text longer than any memory",
        "What is there is read; the reference fails to make room.",
        lambda d: d.aspect in ("value", "refusal") and says(d, "basic_string")),
]



def row_of(difference):
    for row in ROWS:
        if row.takes(difference):
            return row
    return None
