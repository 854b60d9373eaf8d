#include "shell/login/attendance_screen.h"

#include "common/dialogs/dialogs.h"
#include "shell/login/attendance.h"
#include "shell/startup/app_state.h"

#include <QDateTime>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QTimer>
#include <QVBoxLayout>

namespace orvo::shell {

namespace {
// How long the result stays on screen, and how long a card reader may take to type a number.
constexpr int kClearMs = 5000;
constexpr int kReaderMs = 1500;

QLabel* namedLabel(QWidget* parent, const char* name) {
    auto* l = new QLabel(parent);
    l->setObjectName(QString::fromLatin1(name));
    return l;
}
} // namespace

AttendanceScreen::AttendanceScreen(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("frmControlAcceso"));
    setWindowTitle(QStringLiteral("Control de acceso"));
    m_card = new QLineEdit(this);
    m_card->setObjectName(QStringLiteral("TxtCedula"));
    m_name = namedLabel(this, "lblNombre");
    m_cardLabel = namedLabel(this, "lblCedula");
    m_date = namedLabel(this, "lblFecha");
    m_time = namedLabel(this, "lblHora");
    m_condition = namedLabel(this, "lblCondicion");
    QFont big = m_condition->font();
    big.setPointSize(big.pointSize() + 6);
    big.setBold(true);
    m_condition->setFont(big);
    m_time->setFont(big);

    auto* form = new QFormLayout;
    form->addRow(QStringLiteral("Cédula:"), m_card);
    form->addRow(QStringLiteral("Nombre:"), m_name);
    form->addRow(QStringLiteral("Cédula:"), m_cardLabel);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(m_date);
    layout->addWidget(m_time);
    layout->addLayout(form);
    layout->addWidget(m_condition);

    m_clock = new QTimer(this);
    m_clock->setObjectName(QStringLiteral("TmrRellotge"));
    m_clock->setInterval(1000);
    connect(m_clock, &QTimer::timeout, this, &AttendanceScreen::showClock);
    m_clock->start();
    m_clear = new QTimer(this);
    m_clear->setObjectName(QStringLiteral("TimerLimpiar"));
    m_clear->setSingleShot(true);
    m_clear->setInterval(kClearMs);
    connect(m_clear, &QTimer::timeout, this, &AttendanceScreen::clearResult);
    // Without DejarEditar the number must come from the card reader, which types it at once:
    // a number still unfinished after a moment was typed by hand and is dropped.
    m_editing = new QTimer(this);
    m_editing->setObjectName(QStringLiteral("TimerEdicion"));
    m_editing->setSingleShot(true);
    m_editing->setInterval(kReaderMs);
    connect(m_editing, &QTimer::timeout, m_card, &QLineEdit::clear);
    guarded(this, [&] { m_typingAllowed = cardTypingAllowed(mainDb()); });
    if (!m_typingAllowed)
        m_card->setContextMenuPolicy(Qt::NoContextMenu);
    connect(m_card, &QLineEdit::textEdited, this, [this](const QString& text) {
        if (!m_typingAllowed && text.size() == 1)
            m_editing->start();
    });
    connect(m_card, &QLineEdit::returnPressed, this,
            [this] { guarded(this, [&] { cardEntered(); }); });
    showClock();
}

void AttendanceScreen::showClock() {
    const QLocale es(QLocale::Spanish, QLocale::Venezuela);
    const QDateTime now = QDateTime::currentDateTime();
    m_time->setText(es.toString(now.time(), QStringLiteral("hh:mm:ss ap")));
    m_date->setText(es.toString(now.date(), QStringLiteral("dddd, d / MMMM / yyyy")));
}

void AttendanceScreen::cardEntered() {
    m_editing->stop();
    const QString card = m_card->text().trimmed();
    if (card.isEmpty())
        return;
    const AttendanceResult r = recordAttendance(mainDb(), card, QDateTime::currentDateTime());
    m_name->setText(r.name);
    m_cardLabel->setText(r.kind == AttendanceResult::Kind::InvalidDate ? QString() : r.card);
    m_condition->setText(r.condition);
    m_card->clear();
    m_clear->start();
}

void AttendanceScreen::clearResult() {
    m_name->clear();
    m_cardLabel->clear();
    m_condition->clear();
    m_card->clear();
    m_card->setFocus();
}

} // namespace orvo::shell
