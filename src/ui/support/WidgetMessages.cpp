#include "ui/support/WidgetMessages.h"

#include <QCoreApplication>
#include <QMessageBox>
#include <QPushButton>

#include <map>

namespace ui {

namespace {

QMessageBox::StandardButton ButtonFor(util::Answer answer) {
    switch (answer) {
    case util::Answer::Ok:
        return QMessageBox::Ok;
    case util::Answer::Yes:
        return QMessageBox::Yes;
    case util::Answer::No:
        return QMessageBox::No;
    case util::Answer::Cancel:
        return QMessageBox::Cancel;
    }
    return QMessageBox::Ok;
}

QMessageBox::Icon IconFor(util::MessageKind kind) {
    switch (kind) {
    case util::MessageKind::Information:
        return QMessageBox::Information;
    case util::MessageKind::Warning:
        return QMessageBox::Warning;
    case util::MessageKind::Error:
        return QMessageBox::Critical;
    case util::MessageKind::Question:
        return QMessageBox::Question;
    }
    return QMessageBox::NoIcon;
}

} // namespace

WidgetMessages::WidgetMessages(QWidget* parent) : m_parent(parent) {}

util::Answer WidgetMessages::Show(util::MessageKind kind, const QString& text,
                                  const QList<util::Answer>& answers) {
    // Only questions offer a choice; everything else is acknowledged with OK.
    QList<util::Answer> offered;
    if (kind == util::MessageKind::Question)
        for (util::Answer answer : answers)
            if (!offered.contains(answer))
                offered.append(answer);
    if (offered.isEmpty())
        offered.append(util::Answer::Ok);

    QMessageBox box(IconFor(kind), QCoreApplication::applicationName(), text, QMessageBox::NoButton,
                    m_parent);
    std::map<QAbstractButton*, util::Answer> answerOf;
    for (util::Answer answer : offered)
        answerOf[box.addButton(ButtonFor(answer))] = answer;
    box.setDefaultButton(ButtonFor(offered.front()));
    // Escape (and closing the box) means Cancel where the question offers it.
    const util::Answer escape =
        offered.contains(util::Answer::Cancel) ? util::Answer::Cancel : offered.back();
    box.setEscapeButton(box.button(ButtonFor(escape)));
    box.exec();

    const auto chosen = answerOf.find(box.clickedButton());
    const util::Answer answer = chosen == answerOf.end() ? escape : chosen->second;
    return kind == util::MessageKind::Question ? answer : util::Answer::Ok;
}

} // namespace ui
