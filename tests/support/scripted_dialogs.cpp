#include "scripted_dialogs.h"

#include <QCoreApplication>
#include <QPrinter>
#include <gtest/gtest.h>

namespace orvo::test {

ScriptedDialogs::ScriptedDialogs() {
    setDialogs(this);
}

ScriptedDialogs::~ScriptedDialogs() {
    setDialogs(nullptr);
}

void ScriptedDialogs::expectQuestion(const QString& textPart, bool yes) {
    m_questions.emplace_back(textPart, yes);
}
void ScriptedDialogs::expectAuthorisation(const QString& user, const QString& password) {
    m_credentials.push_back({user, password});
}
void ScriptedDialogs::expectTextInput(const QString& value) {
    m_inputs.push_back(value);
}
void ScriptedDialogs::expectFileName(const QString& path) {
    m_files.push_back(path);
}
void ScriptedDialogs::expectPrinter(const QString& pdfPath) {
    m_printers.push_back(pdfPath);
}

// A real message box runs the events waiting meanwhile: what a screen queued runs then too.
void ScriptedDialogs::showAsABoxWould() {
    QCoreApplication::processEvents();
}

QStringList ScriptedDialogs::texts() const {
    QStringList out;
    for (const auto& m : m_messages)
        out << m.text;
    return out;
}

bool ScriptedDialogs::allAnswered() const {
    return m_questions.empty() && m_credentials.empty() && m_inputs.empty() && m_files.empty() &&
           m_printers.empty();
}

void ScriptedDialogs::information(QWidget*, const QString& text, const QString& title) {
    m_messages.append({QStringLiteral("information"), title, text});
    showAsABoxWould();
}

void ScriptedDialogs::warning(QWidget*, const QString& text, const QString& title) {
    m_messages.append({QStringLiteral("warning"), title, text});
    showAsABoxWould();
}

void ScriptedDialogs::databaseError(QWidget*, const DbError& error) {
    m_messages.append(
        {QStringLiteral("error"), QStringLiteral("Error de base de datos"), error.message()});
}

bool ScriptedDialogs::question(QWidget*, const QString& text, const QString& title, bool) {
    m_messages.append({QStringLiteral("question"), title, text});
    if (m_questions.empty()) {
        ADD_FAILURE() << "unexpected question: " << text.toStdString();
        return false;
    }
    auto [part, yes] = m_questions.front();
    m_questions.pop_front();
    EXPECT_TRUE(text.contains(part))
        << "question \"" << text.toStdString() << "\" was expected to contain \""
        << part.toStdString() << "\"";
    return yes;
}

std::optional<Dialogs::Credentials> ScriptedDialogs::authorisation(QWidget*, const QString& prompt,
                                                                   const QString& formName) {
    // The dialog's name stands in the title's place.
    m_messages.append({QStringLiteral("authorisation"), formName, prompt});
    if (m_credentials.empty())
        return std::nullopt;
    auto c = m_credentials.front();
    m_credentials.pop_front();
    return c;
}

std::optional<QString> ScriptedDialogs::textInput(QWidget*, const QString& title,
                                                  const QString& label, const QString&, bool) {
    m_messages.append({QStringLiteral("input"), title, label});
    if (m_inputs.empty())
        return std::nullopt;
    auto v = m_inputs.front();
    m_inputs.pop_front();
    return v;
}

QString ScriptedDialogs::openFileName(QWidget*, const QString&, const QString&, const QString&) {
    if (m_files.empty())
        return {};
    auto v = m_files.front();
    m_files.pop_front();
    return v;
}

QString ScriptedDialogs::saveFileName(QWidget* p, const QString& c, const QString& d,
                                      const QString& f) {
    return openFileName(p, c, d, f);
}

bool ScriptedDialogs::choosePrinter(QWidget*, QPrinter& printer) {
    if (m_printers.empty())
        return false;
    // An empty path accepts the file the program proposed, as a user pressing Enter would.
    const QString path =
        m_printers.front().isEmpty() ? printer.outputFileName() : m_printers.front();
    m_printers.pop_front();
    if (path.isEmpty())
        return false;
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(path);
    return true;
}

} // namespace orvo::test
