/// The DSN editor as a window, drawn by Qt.
#ifndef VELTRANEDIALOG_EDITORS_DESKTOPFORM_H
#define VELTRANEDIALOG_EDITORS_DESKTOPFORM_H

#include <QDialog>
#include <array>
#include <vector>

#include "VeltraneDialog/DialogFields.h"
#include "VeltraneDialog/editors/ToolRun.h"

class QGridLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QScrollArea;

namespace Veltrane::ODBC {

class DesktopForm : public QDialog {
public:
    /// @param io_values  changed when the form is accepted
    explicit DesktopForm(DialogValues& io_values);

    void accept() override;

protected:
    void changeEvent(QEvent* in_event) override;
    bool eventFilter(QObject* in_object, QEvent* in_event) override;

private:
    struct Row {
        const DialogField* m_field = nullptr;
        QLineEdit* m_edit = nullptr;
        /// The hint, or the reason why the field is refused.
        QLabel* m_note = nullptr;
        /// An empty field is reported only after the user has edited it.
        bool m_isEdited = false;
    };

    void BuildRow(Row& out_row, const DialogField& in_field, QGridLayout& io_grid);
    QWidget* BuildInput(Row& out_row);
    void Fill(Row& out_row);
    QWidget* BuildButtons();

    /// Updates the notes, the title and OK after a change.
    void Follow();
    DialogValues Collect() const;
    /// Starts a connection test, or stops the running one.
    void Test();
    void ShowNote(const Row& in_row, const char* in_reason);
    QLabel* QuietLabel(const QString& in_text);

    DialogValues& m_values;
    std::array<Row, DIALOG_FIELDS.size()> m_rows;
    std::vector<QLabel*> m_quietLabels;
    /// The fields, which scroll if the screen is too small.
    QScrollArea* m_area = nullptr;
    QPushButton* m_ok = nullptr;
    /// Null if nothing can be tested.
    QPushButton* m_test = nullptr;
    ToolRun m_tool;
    /// The server of the running test.
    QString m_tested;
    QLabel* m_status = nullptr;
};

}  // namespace Veltrane::ODBC

#endif
