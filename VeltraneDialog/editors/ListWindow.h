/// A window with the data sources of both scopes. Every action runs veltrane-dsn: `list`, `edit`,
/// `remove` or `test`.
#ifndef VELTRANEDIALOG_EDITORS_LISTWINDOW_H
#define VELTRANEDIALOG_EDITORS_LISTWINDOW_H

#include <QSortFilterProxyModel>
#include <QStandardItemModel>
#include <QWidget>

#include "VeltraneDialog/editors/ToolRun.h"

class QLabel;
class QLineEdit;
class QMessageBox;
class QPushButton;
class QTreeView;

namespace Veltrane::ODBC {

class ListWindow : public QWidget {
public:
    ListWindow();

    void Reload();

protected:
    void closeEvent(QCloseEvent* in_event) override;

private:
    struct Selected {
        QString m_name;
        bool m_isSystem = false;
    };

    QWidget* BuildList();
    QWidget* BuildButtons();
    QPushButton* AddButton(const char* in_text, void (ListWindow::*in_action)());

    Selected GetSelected() const;
    void Select(const Selected& in_dsn);
    void Fill(const QByteArray& in_list);

    /// Runs a command on the selected data source, or on none, and reloads the list.
    void Run(QStringList in_command, bool in_isSystem, const QString& in_name,
             const QString& in_busyText, std::function<void(const ToolResult&)> in_done);
    void RunOnSelected(const QStringList& in_command, const char* in_busyText);
    void Edit();
    void Copy();
    void Remove();
    void Test();
    /// Updates the buttons after a change of the selection or of the running command.
    void Follow();
    QMessageBox* MakeBox(const QString& in_text);

    QStandardItemModel m_model;
    QSortFilterProxyModel m_filtered;
    ToolRun m_tool;
    bool m_isTesting = false;
    QLineEdit* m_filter = nullptr;
    QTreeView* m_list = nullptr;
    QLabel* m_status = nullptr;
    QPushButton* m_add = nullptr;
    QPushButton* m_test = nullptr;
    std::vector<QPushButton*> m_onSelected;
};

}  // namespace Veltrane::ODBC

#endif
