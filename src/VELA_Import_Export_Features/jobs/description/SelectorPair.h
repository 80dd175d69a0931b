// One selector and one feature that it selects.
#pragma once

#include <QString>

struct SelectorPair
{
    QString strSelector;
    QString strSelected;
    int nValue = 0;
};
