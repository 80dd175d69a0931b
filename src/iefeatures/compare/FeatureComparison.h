// What two features files say differently. No camera and no file access here.
#pragma once

#include "jobs/file/FeaturesFile.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace companion
{

// What is null is on the other side alone.
struct RegisterDifference
{
    qint64 address = 0;
    QString variables;        // "[GainSelector:1]", of the side that has them
    std::optional<QString> a; // "0x0000000A", behind a converter "0x0000000A (5.000000)"
    std::optional<QString> b;
    QString selectors = {}; // "GainSelector=Red"; filled in by who knows it
};

struct FeatureDifference
{
    struct Side
    {
        QString type;      // the type word, "Register" for a register block
        QString value;     // as the file has it; of a register block "4 bytes of GainReg"
        QString entryName; // of an enumeration's value; filled in by who knows it
    };

    QString name;
    std::optional<Side> a;
    std::optional<Side> b;
    QList<RegisterDifference> registers; // of a register block, by address
    QString category = {};               // filled in by who knows it

    bool isRegisterBlock() const { return (a ? *a : *b).type == "Register"; }
};

struct LeftOut
{
    QString name;
    QString why; // a word: "session"; empty: as was asked, or for it changes by itself
};

struct FeatureComparison
{
    QList<FeatureDifference> header;   // no types; a board type may be on one side alone
    QList<FeatureDifference> features; // in A's order, then what B alone has in its order
    QList<LeftOut> leftOut;            // what differs too, but is not asked for

    bool isEqual() const { return header.isEmpty() && features.isEmpty(); }
};

// Values are compared as texts, as imports compare them; of several values of one feature the last one
// counts. `whyLeftOut` is asked about features and header fields that differ; nothing: they are told.
using WhyLeftOut = std::function<std::optional<QString>(const FeatureDifference& difference, bool isHeader)>;
FeatureComparison compareFeatures(const ie::FeaturesContent& a, const ie::FeaturesContent& b,
                                  const WhyLeftOut& whyLeftOut);

} // namespace companion
