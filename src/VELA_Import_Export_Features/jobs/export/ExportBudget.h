// What one export may spend on a description's formulas, however hostile it is: steps, depth, values,
// questions, text.
#pragma once

#include <QString>
#include <QtGlobal>

namespace ie
{

// Charged before anything is done or grows. Every operation answers whether it is allowed; a refusal is
// always a failure of the evaluation, never a value. Once the thread has been asked to end
// (QThread::requestInterruption()), what has become long is refused all that follows.
class ExportBudget
{
public:
    struct Limits
    {
        quint64 values = 1048576;            // of one range, and combinations of one formula
        quint64 variables = 1000;            // of one formula
        int depth = 200;                     // of operations that call each other; circles end here
        quint64 steps = 16 * 1048576;        // of the export: operations and combinations
        quint64 questions = 65536;           // of the export: to the camera, for values that others hang on
        quint64 text = quint64(1024) << 20;  // of the export: characters that are searched for variables
        quint64 memory = quint64(256) << 20; // bytes of the values of one attempt at a feature
        quint64 told = 16 * 1048576; // characters of the export's log lines about combinations that fail
    };

    ExportBudget() = default;
    explicit ExportBudget(const Limits& limits) : m_limits(limits) {}

    // A new attempt at a feature: the values of the last one are gone. Steps, questions and text go on
    // counting.
    void beginFeature() { m_memory = 0; }

    // One operation that may call others; a refused one is left as well.
    bool enter();
    void leave() { --m_depth; }
    // One value that the camera is asked for.
    bool takeQuestion();
    bool takeRange(quint64 values);
    bool takeCombinations(quint64 combinations, quint64 variables);
    // One value in a list, with that many characters of text of its own.
    bool takeValue(qint64 characters = 0);
    // Replaces `name` (not empty) in a formula's text, or leaves the text as it is: no text grows beyond
    // kLongestFormula.
    bool substitute(QString& text, const QString& name, const QString& value);
    // A log line of so many characters about one combination; no refusal where it may not be written.
    bool mayTell(qint64 characters);

    // How often something was refused.
    quint64 refusals() const { return m_refusals; }
    // Whether it was because the thread has been asked to end.
    bool isInterrupted() const { return m_isInterrupted; }

private:
    bool take(quint64& taken, quint64 amount, quint64 limit);
    bool allow(bool isAllowed);
    void lookForInterruption(quint64 amount);

    const Limits m_limits = Limits();
    int m_depth = 0;
    quint64 m_steps = 0;
    quint64 m_questions = 0;
    quint64 m_text = 0;
    quint64 m_memory = 0;
    quint64 m_told = 0;
    quint64 m_refusals = 0;
    quint64 m_sinceLook = 0;
    bool m_isInterrupted = false;
};

} // namespace ie
