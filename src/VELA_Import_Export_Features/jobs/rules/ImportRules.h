// Rules that exports and imports share: what is left alone, and what becomes of a file's texts when they are
// written. Names are compared exactly and case-sensitively.
#pragma once

#include <KXCameraControl/KXCameraControl.h>

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>

namespace ie
{

// Whether a node of that mode takes a value now.
bool isWritable(KX_XML_AccessMode mode);

// Names that are neither exported as features nor ever written: identity, and what would switch the user set.
bool isProtectedFeature(const QString& name);

// What imports leave alone on every camera, and exports on every transport without a filter file, beside the
// protected names: network settings and the like.
const QStringList& commonSkipList();

// Whether a feature stays out for the way in which its node is shown (its Representation; empty: none).
bool isSkippedAsShown(const QString& name, const QString& representation);

// What imports leave alone on every camera but line-scan cameras.
const QStringList& lineScanOnlyList();
// Whether a camera is one, by its enumeration DeviceScanType as a file has it; null (not read): it is none.
bool isLineScan(const QString& scanType);

enum class ImportSkip
{
    None,
    Protected,
    Listed,      // commonSkipList()
    LineScanOnly // lineScanOnlyList(), and the camera is none
};
// Why an import leaves a name alone, as far as names tell. `scanType` is asked where the name depends on it.
ImportSkip importSkip(const QString& name, const std::function<QString()>& scanType);

// What an import writes of a text. Not faithful: the text says something else.
template <typename Value>
struct Imported
{
    Value value;
    bool isFaithful;
};
Imported<bool> importedBoolean(const QString& text);
// Of integers too, through 32 bits without a sign: negative, hexadecimal and larger texts become 0. Meant.
Imported<quint32> importedNumber(const QString& text);
Imported<float> importedFloat(const QString& text);
// One word of a register: the low 32 bits of a decimal or hexadecimal number, else 0.
Imported<quint32> importedWord(const QString& text);
// In the suite's encoding, at most kLongestText bytes; a character that straddles the end is left out whole.
QByteArray importedBytes(const QString& text);
constexpr int kLongestText = 255;

} // namespace ie
