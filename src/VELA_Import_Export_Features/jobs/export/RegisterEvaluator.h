// Works out registers, addresses, lengths and formula values of one export run over the worker's live
// description.
#pragma once

#include "jobs/description/SelectorPair.h"
#include "jobs/export/ExportBudget.h"
#include "jobs/export/FormulaResult.h"

#include <KXCameraControl/KXCameraControl.h>

#include <QDomElement>
#include <QHash>
#include <QList>
#include <QMap>
#include <QString>

// Created for one run and dropped with it. Works on the caller's containers, never on copies: looking a name
// up inserts an empty element for an unknown one, and getRegNode() inserts "name_" entries; both are meant,
// and pointers that it hands out stay good as long as the map is neither copied nor loses entries. Failures
// are logged here in their exact words; nothing is sent to the user.
//
// Hostile descriptions are bounded by the export's budget; whatever it refuses fails.
class RegisterEvaluator
{
public:
    // `handle` is read at each call: null counts as a failed camera call. `gige`: the camera's transport is
    // GigE.
    RegisterEvaluator(KX_HANDLE& handle, QMap<QString, QDomElement>& nodes,
                      const QList<SelectorPair>& selectorPairs, bool gige, ie::ExportBudget& budget);

    // The register element behind a node, or null. `*converter` becomes the last converter passed on the way
    // and stays as it is when there is none. Both may point to `node` itself.
    QDomElement* getRegNode(const QDomElement& node, QDomElement** converter);
    // All addresses of a register.
    bool getIntRegAddress(const QDomElement& reg, QList<_FORMULA_RESULT_>& out);
    // All values of an IntSwissKnife, an Integer or an Enumeration. On failure `out` may hold some all the
    // same.
    bool getValue(const QDomElement& node, QList<_FORMULA_RESULT_>& out);
    // All values of an integer-like node, reading registers where needed.
    bool getIntValue(const QDomElement& node, QList<_FORMULA_RESULT_>& out);
    // Whether some selector selects the feature; remembers what the selector stands for.
    bool isSelectedFeature(const QString& name);

    // The text of a register's Length, or else of its pLength child; empty without either.
    struct LengthText
    {
        QString text;
        bool isReference = false; // of a pLength child
    };
    static LengthText lengthText(const QDomElement& reg);
    // The length that the text stands for. False when it is none: no number, or a reference without a value.
    bool length(const LengthText& length, qint64& bytes);

    // Whether the whole text is a hexadecimal number with or without "0x".
    static bool isNumber(const QString& text);

    // What the run may spend; charged by who computes over this evaluator as well.
    ie::ExportBudget& budget() { return m_budget; }

private:
    struct Formula;
    class Nesting;

    bool getSwissKnifeValue(const QDomElement& node, QList<_FORMULA_RESULT_>& out);
    bool takeVariable(const QDomElement& variable, const QString& swissKnife, Formula& formula);
    bool isAffordable(const Formula& formula);
    bool append(const _FORMULA_RESULT_& result, QList<_FORMULA_RESULT_>& out);
    bool computeFormula(const Formula& formula, const QString& text, const QString& variables, int index,
                        QList<_FORMULA_RESULT_>& out, bool& ok);
    bool getBitFieldValue(const QDomElement& node, QList<_FORMULA_RESULT_>& out);
    bool readBitFields(const QDomElement& node, const QDomElement& reg, qint64 bytes,
                       const QList<_FORMULA_RESULT_>& addresses, QList<_FORMULA_RESULT_>& out);
    bool getLinkedValue(const QDomElement& node, QList<_FORMULA_RESULT_>& out);
    bool getRegisterValue(const QDomElement& reg, QList<_FORMULA_RESULT_>& out);
    bool getConstantValue(const QDomElement& node, QList<_FORMULA_RESULT_>& out);
    bool getSelectorValue(const QDomElement& selector, QList<_FORMULA_RESULT_>& out);
    bool appendSupported(const QString& name, QList<_FORMULA_RESULT_>& out);
    bool appendRange(const QString& name, QList<_FORMULA_RESULT_>& out);
    bool readMemory(qint64 address, void* buffer, qint64 bytes);

    KX_HANDLE& m_hDevice;
    QMap<QString, QDomElement>& m_mapNodeElement;
    bool m_bGigE;
    QHash<QString, QStringList> m_mapSelectorsOf; // selected feature -> its selectors, in the pairs' order
    QMap<QString, QDomElement> m_mapSelected;     // what a selector stands for -> the selector
    ie::ExportBudget& m_budget;
    int m_nDepth = 0;
};
