// What the evaluator's tests share: a description, indexed as the worker does it, an open camera "S1" by
// script, and one evaluator over both.
#pragma once

#include "jobs/export/RegisterEvaluator.h"
#include "support/QtPrinting.h"
#include "support/Recorder.h"
#include "support/RecordingSuiteTools.h"
#include "support/ScriptedCamera.h"

#include <QDomDocument>

#include <gtest/gtest.h>

#include <memory>

class EvaluatorFixture : public ::testing::Test
{
protected:
    explicit EvaluatorFixture(quint32 transport = KX_TRANSPORT_USB3);
    ~EvaluatorFixture() override;

    // Nodes of a description, without its root element; starts a new run.
    void describe(const QString& nodes);
    // A new run with what has been described.
    void startRun();
    // The description's selectors, as the worker lists their pairs.
    void select(const QString& selector, const QString& selected);

    // Each result in words: "value", "value [N:0]", "value [N:0] formula".
    struct Outcome
    {
        bool ok = false;
        QStringList values;
    };
    Outcome value(const QString& node);
    Outcome integer(const QString& node);
    Outcome addresses(const QString& reg);
    // Name of the register behind a node, "-" for none; `converter` gets the converter's name.
    QString registerOf(const QString& node, QString* converter = nullptr);

    // Log lines since the last call, without the debug stream's quotes.
    QStringList takeLogs();
    // Calls of the camera since the last call of this, in words.
    QStringList takeCalls();

    tests::LogCapture logCapture;
    tests::ScriptedDevice& camera;
    KX_HANDLE handle = nullptr;
    QDomDocument document;
    QMap<QString, QDomElement> nodes;
    QList<SelectorPair> pairs;
    bool gige;
    ie::ExportBudget::Limits limits; // of each new run
    std::unique_ptr<ie::ExportBudget> budget;
    std::unique_ptr<RegisterEvaluator> evaluator;

private:
    static tests::ScriptedDevice& freshCamera();
    void index(const QDomElement& parent);
    int m_logsTaken = 0;
    int m_callsTaken = 0;
    static Outcome outcome(bool ok, const QList<_FORMULA_RESULT_>& results);
};

// Expects success with these values, or a failure with these log lines. The list is made after the
// evaluation.
#define EXPECT_VALUES(outcome_, ...)                                                                         \
    do {                                                                                                     \
        const auto seen_ = (outcome_);                                                                       \
        const QStringList expected_ = __VA_ARGS__;                                                           \
        EXPECT_TRUE(seen_.ok);                                                                               \
        EXPECT_EQ(seen_.values, expected_);                                                                  \
        EXPECT_EQ(takeLogs(), QStringList());                                                                \
    } while (false)
#define EXPECT_FAILURE(outcome_, ...)                                                                        \
    do {                                                                                                     \
        EXPECT_FALSE((outcome_).ok);                                                                         \
        const QStringList expected_ = __VA_ARGS__;                                                           \
        EXPECT_EQ(takeLogs(), expected_);                                                                    \
    } while (false)
