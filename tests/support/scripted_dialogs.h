#pragma once

#include "common/dialogs/dialogs.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <deque>

namespace orvo::test {

// Dialogs for GUI tests: records every message, answers the questions it was told to expect in
// order, and fails the test on a question nobody expected.
class ScriptedDialogs : public Dialogs {
public:
    struct Message {
        QString kind; // "information", "warning", "error", "question"
        QString title;
        QString text;
    };

    ScriptedDialogs();           // installs itself
    ~ScriptedDialogs() override; // restores the real dialogs

    // The next question must contain `textPart`; it is answered `yes`.
    void expectQuestion(const QString& textPart, bool yes);
    void expectAuthorisation(const QString& user, const QString& password);
    void expectTextInput(const QString& value);
    void expectFileName(const QString& path);
    // choosePrinter() answers with a PDF printer writing to `pdfPath` (empty: to the file the
    // program proposed; refused when it proposed none).
    void expectPrinter(const QString& pdfPath);

    const QList<Message>& messages() const { return m_messages; }
    QStringList texts() const;
    QString lastText() const { return m_messages.isEmpty() ? QString() : m_messages.last().text; }
    void clear() { m_messages.clear(); }
    bool allAnswered() const;

    void information(QWidget* parent, const QString& text, const QString& title) override;
    void warning(QWidget* parent, const QString& text, const QString& title) override;
    void databaseError(QWidget* parent, const DbError& error) override;
    bool question(QWidget* parent, const QString& text, const QString& title,
                  bool defaultYes) override;
    std::optional<Credentials> authorisation(QWidget* parent, const QString& prompt,
                                             const QString& formName) override;
    std::optional<QString> textInput(QWidget* parent, const QString& title, const QString& label,
                                     const QString& text, bool password) override;
    QString openFileName(QWidget* parent, const QString& caption, const QString& dir,
                         const QString& filter) override;
    QString saveFileName(QWidget* parent, const QString& caption, const QString& dir,
                         const QString& filter) override;
    bool choosePrinter(QWidget* parent, QPrinter& printer) override;

private:
    void showAsABoxWould();
    QList<Message> m_messages;
    std::deque<std::pair<QString, bool>> m_questions;
    std::deque<Credentials> m_credentials;
    std::deque<QString> m_inputs;
    std::deque<QString> m_files;
    std::deque<QString> m_printers;
};

} // namespace orvo::test
