// Works out registers, addresses, lengths and formula values of one export run over the worker's live description.
#pragma once

#include "FormulaResult.h"
#include "SelectorPair.h"

#include <KXCameraControl/KXCameraControl.h>

#include <QDomElement>
#include <QList>
#include <QMap>
#include <QString>

// Created for one run and dropped with it. Works on the caller's containers, never on copies: looking a name up
// inserts an empty element for an unknown one, and getRegNode() inserts "name_" entries; both are meant, and
// pointers that it hands out stay good as long as the map is neither copied nor loses entries.
// Failures are logged here in their exact words; nothing is sent to the user.
class RegisterEvaluator
{
public:
    // `handle` is read at each call: null counts as a failed camera call. `gige`: the camera's transport is GigE.
    RegisterEvaluator(KX_HANDLE& handle, QMap<QString, QDomElement>& nodes, const QList<SelectorPair>& selectorPairs,
                      bool gige);

    // The register element behind a node, or null. `*converter` becomes the last converter passed on the way and
    // stays as it is when there is none.
    QDomElement* getRegNode(const QDomElement& node, QDomElement** converter);
    // All addresses of a register.
    bool getIntRegAddress(const QDomElement& reg, QList<_FORMULA_RESULT_>& out);
    // All values of an IntSwissKnife, an Integer or an Enumeration. On failure `out` may hold some all the same.
    bool getValue(const QDomElement& node, QList<_FORMULA_RESULT_>& out);
    // All values of an integer-like node, reading registers where needed.
    bool getIntValue(const QDomElement& node, QList<_FORMULA_RESULT_>& out);
    // Whether some selector selects the feature; remembers what the selector stands for.
    bool isSelectedFeature(const QString& name);

    // Whether the whole text is a hexadecimal number with or without "0x".
    static bool isNumber(const QString& text);

private:
    struct Formula;
    void computeFormula(Formula& formula, const QString& text, const QString& variables, int index,
                        QList<_FORMULA_RESULT_>& out, bool& ok);

    KX_HANDLE& m_hDevice;
    QMap<QString, QDomElement>& m_mapNodeElement;
    const QList<SelectorPair>& m_lstSelectorPairs;
    bool m_bGigE;
    QMap<QString, QDomElement> m_mapSelected;
};
