// What a camera's description calls the place of a register and of a feature, for people: selectors with the
// names of their entries, and categories.
#pragma once

#include <KXCameraControl/KXCameraControl.h>

#include <QMap>
#include <QString>

#include <memory>

namespace companion
{

class DescriptionWords
{
public:
    // Over an open handle, which must outlive this; `isGigE`: its camera's transport. The description is
    // parsed with the first question.
    DescriptionWords(KX_HANDLE handle, bool isGigE);
    ~DescriptionWords();
    DescriptionWords(const DescriptionWords&) = delete;
    DescriptionWords& operator=(const DescriptionWords&) = delete;

    // Of the variables that a features file has for a register of the feature: "TriggerSelector=FrameStart"
    // for "[TriggerSelectorValueToIndex:0]", "A=x, B=y" for two; what is not known stays as the file has it,
    // "Index=0".
    QString selectors(const QString& feature, const QString& variables);
    // That lists the feature; empty: none does.
    QString category(const QString& feature);

private:
    struct Parsed;
    using Places = QMap<qint64, QString>; // by values of a variable

    Parsed& parsed();
    QString place(const QString& feature, const QString& variable, qint64 value);
    Places placesOf(const QString& feature, const QString& variable);
    Places placesBy(const QString& selector, const QString& variable);

    KX_HANDLE m_handle;
    const bool m_isGigE;
    std::unique_ptr<Parsed> m_parsed;
    QMap<QString, Places> m_places; // by feature and variable
};

} // namespace companion
