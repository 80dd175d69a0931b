// What the tests of the styled widgets share: a person's hands, and a language of its own.
#pragma once

#include <QApplication>
#include <QDialog>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QTimer>
#include <QTranslator>
#include <QtTest>

// Presses at a point of the widget, moves by so much and lets go there.
inline void drag(QWidget* widget, const QPoint& from, const QPoint& by)
{
    const QPoint start = widget->mapToGlobal(from);
    const auto send = [widget](QEvent::Type type, const QPoint& at, Qt::MouseButton button,
                               Qt::MouseButtons buttons) {
        QMouseEvent event(type, widget->mapFromGlobal(at), at, button, buttons, Qt::NoModifier);
        QApplication::sendEvent(widget, &event);
    };
    send(QEvent::MouseButtonPress, start, Qt::LeftButton, Qt::LeftButton);
    send(QEvent::MouseMove, start + by / 2, Qt::NoButton, Qt::LeftButton);
    send(QEvent::MouseMove, start + by, Qt::NoButton, Qt::LeftButton);
    send(QEvent::MouseButtonRelease, start + by, Qt::LeftButton, Qt::NoButton);
}

// The window system's wish that the window close: Alt+F4, say.
inline void closeByWindowSystem(QWidget* window)
{
    QCloseEvent event;
    QSpontaneKeyEvent::setSpontaneous(&event);
    qApp->notify(window, &event); // sendEvent() would make it the program's own
}

// Runs the function once the next modal dialog is open and active. A dialog that is still there afterwards
// fails the test and is closed, so that its exec() returns.
template <class Function>
void inNextDialog(Function function)
{
    QTimer::singleShot(0, qApp, [function] {
        QDialog* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        QVERIFY(dialog);
        dialog->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(dialog));
        const QPointer<QDialog> guard = dialog;
        function(dialog);
        const bool open = guard && guard->isVisible();
        if (open)
            guard->done(-1);
        QVERIFY2(!open, "the dialog stayed open");
    });
}

// What a signal was emitted with, call by call; the spy begins anew.
using Calls = QList<QVariantList>;
inline Calls taken(QSignalSpy& spy)
{
    const Calls calls = spy;
    spy.clear();
    return calls;
}

template <class Widget>
Widget* part(QWidget* window, const char* name)
{
    return window->findChild<Widget*>(name);
}

// Puts every text into brackets.
class Brackets : public QTranslator
{
public:
    Brackets() { QCoreApplication::installTranslator(this); }
    ~Brackets() override { QCoreApplication::removeTranslator(this); }
    bool isEmpty() const override { return false; }
    QString translate(const char*, const char* text, const char*, int) const override
    {
        return QString("[%1]").arg(text);
    }
};
