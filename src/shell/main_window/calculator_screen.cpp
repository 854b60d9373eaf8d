#include "shell/main_window/calculator_screen.h"

#include <QGridLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>

namespace orvo::shell {

CalculatorScreen::CalculatorScreen(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmCalculadora"));
    setWindowTitle(QStringLiteral("Calculadora"));
    m_display = new QLineEdit(QStringLiteral("0"), this);
    m_display->setObjectName(QStringLiteral("txtPantalla"));
    m_display->setReadOnly(true);
    m_display->setAlignment(Qt::AlignRight);
    auto* grid = new QGridLayout(this);
    grid->addWidget(m_display, 0, 0, 1, 4);
    static const char* keys[5][4] = {{"7", "8", "9", "/"},
                                     {"4", "5", "6", "*"},
                                     {"1", "2", "3", "-"},
                                     {"0", ".", "=", "+"},
                                     {"C", nullptr, nullptr, nullptr}};
    for (int r = 0; r < 5; ++r) {
        for (int c = 0; c < 4; ++c) {
            if (!keys[r][c])
                continue;
            const QString key = QString::fromLatin1(keys[r][c]);
            auto* b = new QPushButton(key, this);
            b->setAutoDefault(false);
            b->setFocusPolicy(Qt::NoFocus);
            connect(b, &QPushButton::clicked, this, [this, key] { press(key); });
            grid->addWidget(b, r + 1, c);
        }
    }
}

QString CalculatorScreen::display() const {
    return m_display->text();
}

void CalculatorScreen::applyPending() {
    const Decimal value = Decimal::fromString(m_display->text());
    if (m_pending == QLatin1String("+"))
        m_accumulator += value;
    else if (m_pending == QLatin1String("-"))
        m_accumulator -= value;
    else if (m_pending == QLatin1String("*"))
        m_accumulator *= value;
    else if (m_pending == QLatin1String("/"))
        m_accumulator = value == Decimal() ? Decimal() : m_accumulator / value;
    else
        m_accumulator = value;
    m_display->setText(m_accumulator.toString());
}

void CalculatorScreen::press(const QString& key) {
    if (key.size() == 1 && (key[0].isDigit() || key == QLatin1String("."))) {
        QString text = m_startNew ? QString() : m_display->text();
        if (key == QLatin1String(".") && text.contains(u'.'))
            return;
        text += key;
        if (text.startsWith(u'0') && text.size() > 1 && text[1] != u'.')
            text.remove(0, 1);
        if (text.startsWith(u'.'))
            text.prepend(u'0');
        m_display->setText(text);
        m_startNew = false;
    } else if (key == QLatin1String("C")) {
        m_accumulator = Decimal();
        m_pending.clear();
        m_display->setText(QStringLiteral("0"));
        m_startNew = true;
    } else if (key == QLatin1String("=")) {
        applyPending();
        m_pending.clear();
        m_startNew = true;
    } else {
        if (!m_startNew || m_pending.isEmpty())
            applyPending();
        m_pending = key;
        m_startNew = true;
    }
}

} // namespace orvo::shell
