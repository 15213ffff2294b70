#include "platform/AlertController.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace kovena {

AlertController::AlertController(QString title, QString message, QWidget *parent)
    : ViewController(parent)
    , m_title(std::move(title))
    , m_message(std::move(message))
{
    setObjectName(QStringLiteral("alertController"));
}

void AlertController::addAction(Action action)
{
    m_actions.append(std::move(action));
}

void AlertController::viewDidLoad()
{
    // A dimmed backdrop over the window with the alert box in its centre.
    setAttribute(Qt::WA_StyledBackground);
    setStyleSheet(QStringLiteral("kovena--AlertController { background-color: rgba(0, 0, 0, 90); }"));
    auto *outer = new QVBoxLayout(this);
    auto *box = new QFrame(this);
    box->setObjectName(QStringLiteral("alertBox"));
    box->setAutoFillBackground(true);
    box->setFrameShape(QFrame::StyledPanel);
    box->setMaximumWidth(320);
    outer->addStretch();
    outer->addWidget(box, 0, Qt::AlignHCenter);
    outer->addStretch();

    auto *content = new QVBoxLayout(box);
    if (!m_title.isEmpty()) {
        auto *titleLabel = new QLabel(m_title, box);
        titleLabel->setObjectName(QStringLiteral("alertTitle"));
        titleLabel->setAlignment(Qt::AlignCenter);
        QFont bold = titleLabel->font();
        bold.setBold(true);
        titleLabel->setFont(bold);
        titleLabel->setWordWrap(true);
        content->addWidget(titleLabel);
    }
    auto *messageLabel = new QLabel(m_message, box);
    messageLabel->setObjectName(QStringLiteral("alertMessage"));
    messageLabel->setAlignment(Qt::AlignCenter);
    messageLabel->setWordWrap(true);
    content->addWidget(messageLabel);

    auto *buttons = new QHBoxLayout;
    for (int i = 0; i < m_actions.size(); ++i) {
        auto *button = new QPushButton(m_actions.at(i).title, box);
        button->setObjectName(QStringLiteral("alertAction%1").arg(i));
        // A screen reader says what the button answers.
        button->setAccessibleDescription(m_message);
        if (m_actions.at(i).style == ActionStyle::Destructive)
            button->setStyleSheet(QStringLiteral("color: #d0021b;"));
        connect(button, &QPushButton::clicked, this, [this, i] { run(i); });
        buttons->addWidget(button);
    }
    content->addLayout(buttons);
}

bool AlertController::trigger(const QString &actionTitle)
{
    for (int i = 0; i < m_actions.size(); ++i) {
        if (m_actions.at(i).title == actionTitle) {
            run(i);
            return true;
        }
    }
    return false;
}

void AlertController::run(int index)
{
    // Copied first: the handler may add actions or otherwise touch this alert.
    const std::function<void()> handler = m_actions.at(index).handler;
    if (handler)
        handler();
    dismiss(true);
}

} // namespace kovena
