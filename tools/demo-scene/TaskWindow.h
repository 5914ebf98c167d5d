#pragma once

#include <QWidget>

class ActivityChart;
class QComboBox;
class QLineEdit;
class QListWidget;
class QPushButton;
class QTextEdit;

// The window of a small task planner: a sidebar of lists, the tasks of one
// release, a chart, and a "New task" form whose Save adds to the list. On
// start and on each save it tells standard output what a driving script
// needs: where its controls are on the screen, and what was saved.
class TaskWindow : public QWidget {
public:
    explicit TaskWindow(bool busy);
    void announceControls() const;

private:
    QWidget* makeSidebar();
    QWidget* makeTaskColumn();
    QWidget* makeForm();
    void addTask(const QString& title, const QString& detail, int priority);
    void save();
    void clearForm();

    QListWidget* tasks_ = nullptr;
    ActivityChart* chart_ = nullptr;
    QLineEdit* title_ = nullptr;
    QTextEdit* notes_ = nullptr;
    QComboBox* priority_ = nullptr;
    QPushButton* saveButton_ = nullptr;
    QPushButton* cancelButton_ = nullptr;
};
