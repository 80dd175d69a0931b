// One evaluated value of the description's formulas.
#pragma once

#include <QString>
#include <QtGlobal>

struct _FORMULA_RESULT_
{
    QString strFormula;   // the formula as written, unsubstituted; empty without one
    QString strVariables; // "[node:value]" groups, joined with nothing
    qint64 nValue = 0;
};
