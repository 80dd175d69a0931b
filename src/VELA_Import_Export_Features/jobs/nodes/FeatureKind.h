// The six kinds of plain features that files know: what each is called, and how it is read, written, printed
// and compared.
#pragma once

#include "jobs/nodes/NodeAccess.h"

#include <QString>

#include <optional>

namespace ie
{

enum class FeatureKind
{
    Boolean,
    Enumeration,
    Integer,
    IntReg,
    Float,
    StringReg
};

// The kind that a type word of a file, or the tag of a node, names; nothing for any other word.
std::optional<FeatureKind> featureKind(const QString& typeWord);
QString typeWord(FeatureKind kind);

// Imports apply a file in passes; plain features go into the first three.
constexpr int kPlainPasses = 3;
int importPass(FeatureKind kind); // 1 to kPlainPasses

struct FeatureReading
{
    KX_Status status = KX_OK;               // of the camera library; KX_OK too where it was not asked
    QString text;                           // as a file has it; null: not read
    std::optional<KX_IntegerValue> integer; // of what was read, what its kind has
    std::optional<KX_EnumValue> enumeration;
    std::optional<KX_FloatValue> real;
    std::optional<qint64> longestText; // bytes
    bool isGood() const { return !text.isNull(); }
};
FeatureReading readFeature(const NodeAccess& camera, FeatureKind kind, const QString& name);

// Writes what an import makes of the text.
bool writeFeature(NodeAccess& camera, FeatureKind kind, const QString& name, const QString& text, int* code);

struct ImportedText
{
    QString text;    // as a file would have it once it is written
    bool isFaithful; // it is what the file says
};
ImportedText importedText(FeatureKind kind, const QString& fileText);

// Whether two texts stand for the same value ("1" and "true" do not, "1" and "01" do). Imports themselves
// compare texts.
bool isSameValue(FeatureKind kind, const QString& fileText, const QString& cameraText);

// What the text of an integer means: a decimal number, or "0x" and hexadecimal digits, of 64 bits with a
// sign.
std::optional<qint64> meantInteger(const QString& text);

} // namespace ie
