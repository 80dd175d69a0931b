// The raw registers behind one feature, as the features file holds them.
#pragma once

#include "jobs/export/RegisterEvaluator.h"

#include <QString>

enum class RegisterAttempt
{
    Written,
    Failed, // a plain value may still be had; the log says why
    LeftOut // the feature's register is empty: nothing of it is exported, without a word
};

// Works out every address of the register behind `feature`, reads it, and appends its block to `text`, whole
// or not at all. `handle` and `nodes` are those of the evaluator.
RegisterAttempt appendRegisterBlock(RegisterEvaluator& evaluator, KX_HANDLE& handle,
                                    QMap<QString, QDomElement>& nodes, bool gige, const QDomElement& feature,
                                    QString& text);
