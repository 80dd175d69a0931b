// Writes down what the window calls of the libraries that it is built on, in the order and with the arguments
// of the calls. Linked into a test program, its functions stand before the libraries' of the same names, note
// the call and pass it on. A library's calls of its own functions are seen as well.
#pragma once

#include <QStringList>

#include <functional>

namespace tests
{

// Empty again after each call of it.
QStringList takeWindowCalls();

// Told of each call as it is made; empty: nobody.
void setWindowCallHook(std::function<void(const QString& call)> hook);

} // namespace tests
