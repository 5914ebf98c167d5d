#include "TaskWindow.h"

#include "ActivityChart.h"

#include <QComboBox>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPainter>
#include <QPushButton>
#include <QTextEdit>
#include <QVBoxLayout>

#include <cstdio>

namespace {

const char* const priorityNames[] = {"Low", "Normal", "High", "Urgent"};
const QColor priorityColours[] = {QColor(0x8a, 0x94, 0xa6), QColor(0x3b, 0x6e, 0xf5), QColor(0xf0, 0x8c, 0x2e),
                                  QColor(0xe0, 0x45, 0x5a)};

const char* const windowStyle = R"(
QWidget#window { background: #f4f6fb; }
QWidget#sidebar { background: #1d243b; }
QLabel#brand { color: white; font-size: 22px; font-weight: bold; padding: 4px 8px 18px 8px; }
QPushButton[nav="true"] { color: #c8cee0; background: transparent; border: none; text-align: left;
                          padding: 10px 14px; border-radius: 8px; font-size: 16px; }
QPushButton[nav="true"]:checked { background: #2e3856; color: white; }
QLabel#heading { color: #1d243b; font-size: 30px; font-weight: bold; }
QLabel#subheading { color: #6b7288; font-size: 16px; }
QListWidget { background: white; border: 1px solid #e3e6ef; border-radius: 12px; padding: 6px;
              font-size: 16px; color: #1d243b; outline: none; }
QListWidget::item { padding: 12px 10px; border-bottom: 1px solid #eef0f5; }
QListWidget::item:selected { background: #e8eefe; color: #1d243b; border-radius: 8px; }
QFrame#form { background: white; border: 1px solid #e3e6ef; border-radius: 14px; }
QLabel#formTitle { color: #1d243b; font-size: 22px; font-weight: bold; }
QLabel[field="true"] { color: #4a5168; font-size: 14px; font-weight: bold; }
QLineEdit, QTextEdit { border: 1px solid #cfd5e3; border-radius: 8px; padding: 8px 10px;
                                  font-size: 16px; color: #1d243b; background: #fbfcff; }
QLineEdit:focus, QTextEdit:focus { border: 2px solid #3b6ef5; }
QComboBox { font-size: 16px; color: #1d243b; min-height: 34px; }
QComboBox QAbstractItemView { font-size: 16px; padding: 4px; selection-background-color: #e8eefe;
                              selection-color: #1d243b; }
QPushButton#save { background: #3b6ef5; color: white; border: none; border-radius: 8px;
                   padding: 10px 28px; font-size: 16px; font-weight: bold; }
QPushButton#save:pressed { background: #2c58d0; }
QPushButton#cancel { background: white; color: #4a5168; border: 1px solid #cfd5e3; border-radius: 8px;
                     padding: 10px 22px; font-size: 16px; }
)";

QIcon dot(const QColor& colour) {
    QPixmap pixmap(28, 28);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colour);
    painter.drawEllipse(QRectF(6, 6, 16, 16));
    return QIcon(pixmap);
}

QLabel* fieldLabel(const QString& text) {
    auto* label = new QLabel(text);
    label->setProperty("field", true);
    return label;
}

QString where(const QWidget* widget) {
    QPoint centre = widget->mapToGlobal(widget->rect().center());
    return QString("%1,%2").arg(centre.x()).arg(centre.y());
}

} // namespace

TaskWindow::TaskWindow(bool busy) {
    setObjectName("window");
    setWindowTitle("Plannery - Release 2.4");
    setStyleSheet(windowStyle);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(makeSidebar());
    layout->addWidget(makeTaskColumn(), 1);
    layout->addWidget(makeForm());
    if (busy) chart_->run();
}

QWidget* TaskWindow::makeSidebar() {
    auto* sidebar = new QWidget;
    sidebar->setObjectName("sidebar");
    sidebar->setAttribute(Qt::WA_StyledBackground);
    sidebar->setFixedWidth(260);
    auto* layout = new QVBoxLayout(sidebar);
    layout->setContentsMargins(18, 28, 18, 28);
    layout->setSpacing(4);
    auto* brand = new QLabel("Plannery");
    brand->setObjectName("brand");
    layout->addWidget(brand);
    for (const char* name : {"Inbox", "Today", "Release 2.4", "Backlog", "Done"}) {
        auto* entry = new QPushButton(name);
        entry->setProperty("nav", true);
        entry->setCheckable(true);
        entry->setChecked(QString(name) == "Release 2.4");
        entry->setFocusPolicy(Qt::NoFocus);
        layout->addWidget(entry);
    }
    layout->addStretch();
    return sidebar;
}

QWidget* TaskWindow::makeTaskColumn() {
    auto* column = new QWidget;
    auto* layout = new QVBoxLayout(column);
    layout->setContentsMargins(40, 36, 28, 36);
    layout->setSpacing(14);
    auto* heading = new QLabel("Release 2.4");
    heading->setObjectName("heading");
    auto* subheading = new QLabel("Ships Friday  \u00b7  the tasks left before the release");
    subheading->setObjectName("subheading");
    layout->addWidget(heading);
    layout->addWidget(subheading);
    tasks_ = new QListWidget;
    tasks_->setIconSize(QSize(28, 28));
    tasks_->setFocusPolicy(Qt::NoFocus);
    addTask("Update the changelog", "Collect the merged fixes since 2.3", 2);
    addTask("Check crash reports from the beta", "Two new ones on older graphics drivers", 3);
    addTask("Write the release notes draft", "Short, with one picture per feature", 1);
    addTask("Tag the build and archive it", "After the last test run is green", 2);
    tasks_->setCurrentRow(-1);
    layout->addWidget(tasks_, 3);
    chart_ = new ActivityChart;
    layout->addWidget(chart_, 2);
    return column;
}

QWidget* TaskWindow::makeForm() {
    auto* outer = new QWidget;
    outer->setFixedWidth(520);
    auto* outerLayout = new QVBoxLayout(outer);
    outerLayout->setContentsMargins(12, 36, 40, 36);
    auto* form = new QFrame;
    form->setObjectName("form");
    auto* layout = new QVBoxLayout(form);
    layout->setContentsMargins(28, 24, 28, 28);
    layout->setSpacing(10);
    auto* heading = new QLabel("New task");
    heading->setObjectName("formTitle");
    layout->addWidget(heading);
    layout->addSpacing(8);
    title_ = new QLineEdit;
    title_->setPlaceholderText("What needs doing?");
    notes_ = new QTextEdit;
    notes_->setPlaceholderText("Details, links, who to ask\u2026");
    notes_->setAcceptRichText(false);
    notes_->setTabChangesFocus(true);
    priority_ = new QComboBox;
    for (int i = 0; i < 4; ++i) priority_->addItem(dot(priorityColours[i]), priorityNames[i]);
    priority_->setCurrentIndex(1);
    auto* assignee = new QComboBox;
    assignee->addItems({"Me", "Sam Ortega", "Priya Nair"});
    assignee->setFocusPolicy(Qt::NoFocus);
    auto* due = new QLineEdit("Friday");
    due->setFocusPolicy(Qt::ClickFocus);
    layout->addWidget(fieldLabel("Title"));
    layout->addWidget(title_);
    layout->addSpacing(6);
    layout->addWidget(fieldLabel("Notes"));
    notes_->setFixedHeight(240);
    layout->addWidget(notes_);
    layout->addSpacing(6);
    layout->addWidget(fieldLabel("Priority"));
    layout->addWidget(priority_);
    layout->addSpacing(6);
    layout->addWidget(fieldLabel("Assignee"));
    layout->addWidget(assignee);
    layout->addSpacing(6);
    layout->addWidget(fieldLabel("Due"));
    layout->addWidget(due);
    layout->addSpacing(18);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    cancelButton_ = new QPushButton("Cancel");
    cancelButton_->setObjectName("cancel");
    saveButton_ = new QPushButton("Save");
    saveButton_->setObjectName("save");
    buttons->addWidget(cancelButton_);
    buttons->addWidget(saveButton_);
    layout->addLayout(buttons);
    // The buttons follow the fields rather than the card's foot, where a
    // recording's camera bubble usually sits.
    layout->addStretch(1);
    connect(saveButton_, &QPushButton::clicked, this, &TaskWindow::save);
    connect(cancelButton_, &QPushButton::clicked, this, [this] {
        clearForm();
        std::printf("cancelled\n");
        std::fflush(stdout);
    });
    outerLayout->addWidget(form);
    return outer;
}

void TaskWindow::addTask(const QString& title, const QString& detail, int priority) {
    auto* item = new QListWidgetItem(dot(priorityColours[priority]),
                                     title + "\n" + priorityNames[priority] + "  \u00b7  " + detail);
    tasks_->addItem(item);
}

void TaskWindow::save() {
    QString title = title_->text().trimmed();
    if (title.isEmpty()) {
        title_->setFocus();
        return;
    }
    QString notes = notes_->toPlainText().simplified();
    int priority = priority_->currentIndex();
    addTask(title, notes.isEmpty() ? QString("No notes") : notes, priority);
    tasks_->setCurrentRow(tasks_->count() - 1);
    std::printf("saved\t%s\t%s\t%s\n", title.toUtf8().constData(), priorityNames[priority],
                notes.toUtf8().constData());
    std::fflush(stdout);
    clearForm();
}

void TaskWindow::clearForm() {
    title_->clear();
    notes_->clear();
    priority_->setCurrentIndex(1);
}

void TaskWindow::announceControls() const {
    std::printf("ready title=%s notes=%s priority=%s save=%s cancel=%s list=%s\n", qPrintable(where(title_)),
                qPrintable(where(notes_)), qPrintable(where(priority_)), qPrintable(where(saveButton_)),
                qPrintable(where(cancelButton_)), qPrintable(where(tasks_)));
    std::fflush(stdout);
}
