#pragma once

#include <QString>
#include <stdexcept>

namespace orvo {

// A refusal the user must read: the system's own Spanish text, shown in a message box by the
// screen that ran the action. The user's input stays where it was.
class UserError : public std::runtime_error {
public:
    explicit UserError(QString text, QString title = QStringLiteral("Información"))
        : std::runtime_error(text.toStdString()), m_text(std::move(text)),
          m_title(std::move(title)) {}
    const QString& text() const { return m_text; }
    const QString& title() const { return m_title; }

private:
    QString m_text;
    QString m_title;
};

// A failed statement: the engine's error number and description, shown as they come.
class DbError : public std::runtime_error {
public:
    DbError(QString number, QString text, QString statement = {})
        : std::runtime_error((number + QLatin1Char(' ') + text).toStdString()),
          m_number(std::move(number)), m_text(std::move(text)), m_statement(std::move(statement)) {}
    const QString& number() const { return m_number; }
    const QString& text() const { return m_text; }
    const QString& statement() const { return m_statement; }
    // The message box text: number, line break, description.
    QString message() const { return m_number + QLatin1Char('\n') + m_text; }

private:
    QString m_number;
    QString m_text;
    QString m_statement;
};

} // namespace orvo
