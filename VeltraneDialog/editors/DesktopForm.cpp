#include "VeltraneDialog/editors/DesktopForm.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QEvent>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QStyle>
#include <algorithm>

#include "VeltraneDialog/FieldRules.h"
#include "VeltraneDialog/Wipe.h"
#include "VeltraneDialog/editors/ConnectionTry.h"
#include "VeltraneDialog/editors/QtText.h"

namespace Veltrane::ODBC {

namespace {

/// Wide enough for a server's full name, in average characters.
constexpr int FIELD_WIDTH = 66;

/// Qt truncates longer text. Far more than the host sends.
constexpr int MAX_LENGTH = 1 << 24;

QLabel* SmallLabel(const QString& in_text, QWidget* in_parent) {
    auto* label = new QLabel(in_text, in_parent);
    QFont font = label->font();
    font.setPointSizeF(font.pointSizeF() * 0.88);
    label->setFont(font);
    return label;
}

void SetColor(QWidget& io_widget, const QColor& in_color) {
    QPalette palette = io_widget.palette();
    if (palette.color(QPalette::WindowText) != in_color) {
        palette.setColor(QPalette::WindowText, in_color);
        io_widget.setPalette(palette);
    }
}

/// A red that can be read on the background, light or dark.
QColor ReasonColor(const QPalette& in_palette) {
    const bool isDark = in_palette.color(QPalette::Window).lightness() < 128;
    return isDark ? QColor(0xFF, 0x8A, 0x80) : QColor(0xB0, 0x00, 0x20);
}

/// Less prominent than other text, but readable.
QColor QuietColor(const QPalette& in_palette) {
    QColor color = in_palette.color(QPalette::WindowText);
    color.setAlphaF(0.72F);
    return color;
}

/// As large as its fields if the screen has room; otherwise the fields scroll.
class FieldArea : public QScrollArea {
public:
    using QScrollArea::QScrollArea;
    QSize sizeHint() const override { return widget()->sizeHint(); }
};

}  // namespace

DesktopForm::DesktopForm(DialogValues& io_values) : m_values(io_values) {
    auto* fields = new QWidget(this);
    auto* grid = new QGridLayout(fields);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setColumnStretch(1, 1);
    grid->setVerticalSpacing(2);
    grid->setHorizontalSpacing(14);
    for (std::size_t i = 0; i < DISPLAY_ORDER.size(); ++i) {
        BuildRow(m_rows[i], DIALOG_FIELDS[DISPLAY_ORDER[i]], *grid);
    }
    grid->setRowStretch(grid->rowCount(), 1);
    m_area = new FieldArea(this);
    m_area->setFrameShape(QFrame::NoFrame);
    m_area->setWidgetResizable(true);
    m_area->setFocusPolicy(Qt::NoFocus);
    m_area->setWidget(fields);
    auto* layout = new QVBoxLayout(this);
    layout->setSpacing(0);
    layout->addWidget(m_area, 1);
    layout->addWidget(BuildButtons());
    // Qt would use at most two thirds of the screen.
    const QSize title(0, style()->pixelMetric(QStyle::PM_TitleBarHeight));
    resize(sizeHint().boundedTo(screen()->availableSize() - title));
    Follow();
    const auto first = std::find_if(m_rows.begin(), m_rows.end(), [](const Row& in_row) {
        return in_row.m_field->m_isRequired && in_row.m_edit->text().isEmpty();
    });
    (first != m_rows.end() ? *first : m_rows.front()).m_edit->setFocus();
}

void DesktopForm::BuildRow(Row& out_row, const DialogField& in_field, QGridLayout& io_grid) {
    out_row.m_field = &in_field;
    const QString mark = in_field.m_isRequired ? QStringLiteral(" *") : QString();
    auto* label = new QLabel(Translated(in_field.m_label) + mark, this);
    QWidget* const input = BuildInput(out_row);
    // The edit of a choice takes no focus itself.
    const bool isChoice = in_field.m_kind == DialogFieldKind::LOGIN_MODE;
    label->setBuddy(isChoice ? input : out_row.m_edit);

    QLabel* const key = QuietLabel(
        QString::fromUtf8(in_field.m_key.data(), static_cast<qsizetype>(in_field.m_key.size())));
    out_row.m_note = SmallLabel(QString(), this);
    out_row.m_note->setWordWrap(true);
    out_row.m_note->setTextFormat(Qt::PlainText);

    const int top = io_grid.rowCount();
    io_grid.addWidget(label, top, 0);
    io_grid.addWidget(input, top, 1);
    io_grid.addWidget(key, top + 1, 0, Qt::AlignTop);
    io_grid.addWidget(out_row.m_note, top + 1, 1, Qt::AlignTop);
    io_grid.setRowMinimumHeight(top + 2, fontMetrics().height() / 2);
    // A row without an item is not counted.
    io_grid.addItem(new QSpacerItem(0, 0), top + 2, 0);
    Fill(out_row);
}

void DesktopForm::Fill(Row& out_row) {
    const DialogField& field = *out_row.m_field;
    const std::u16string& value = *(m_values.*field.m_value);
    out_row.m_edit->setText(QString::fromUtf16(value.data(), static_cast<qsizetype>(value.size())));
    out_row.m_edit->setCursorPosition(0);
    out_row.m_edit->setAccessibleName(QString::fromUtf8(TranslatePlain(field.m_label).c_str()));
    out_row.m_edit->installEventFilter(this);
    connect(out_row.m_edit, &QLineEdit::textChanged, this, [this, &out_row] {
        out_row.m_isEdited = true;
        Follow();
    });
}

/// @return the edit, or the widget that contains it
QWidget* DesktopForm::BuildInput(Row& out_row) {
    if (out_row.m_field->m_kind == DialogFieldKind::LOGIN_MODE) {
        auto* choice = new QComboBox(this);
        choice->setEditable(true);
        choice->installEventFilter(this);  // the choice, not its edit, gets the focus
        choice->setInsertPolicy(QComboBox::NoInsert);
        for (const char* mode : LOGIN_MODES) {
            choice->addItem(QString::fromUtf8(mode));
        }
        // No completer, because it would change what the user types.
        choice->setCompleter(nullptr);
        out_row.m_edit = choice->lineEdit();
        out_row.m_edit->setMaxLength(MAX_LENGTH);
        return choice;
    }
    out_row.m_edit = new QLineEdit(this);
    out_row.m_edit->setMaxLength(MAX_LENGTH);
    out_row.m_edit->setMinimumWidth(std::min(fontMetrics().averageCharWidth() * FIELD_WIDTH,
                                             screen()->availableSize().width() * 2 / 3));
    if (out_row.m_field->m_kind != DialogFieldKind::PASSWORD) {
        return out_row.m_edit;
    }
    QLineEdit* const edit = out_row.m_edit;
    edit->setEchoMode(QLineEdit::Password);
    edit->setMinimumWidth(0);
    auto* both = new QWidget(this);
    auto* layout = new QHBoxLayout(both);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* show = new QCheckBox(Translated(TEXT_SHOW_PASSWORD), both);
    layout->addWidget(edit, 1);
    layout->addWidget(show);
    connect(show, &QCheckBox::toggled, edit, [edit](bool in_isShown) {
        edit->setEchoMode(in_isShown ? QLineEdit::Normal : QLineEdit::Password);
    });
    return both;
}

QWidget* DesktopForm::BuildButtons() {
    auto* bottom = new QWidget(this);
    auto* layout = new QHBoxLayout(bottom);
    layout->setContentsMargins(0, fontMetrics().height() / 2, 0, 0);
    auto* buttons = new QDialogButtonBox(bottom);
    m_ok = buttons->addButton(Translated(TEXT_OK), QDialogButtonBox::AcceptRole);
    m_ok->setDefault(true);
    buttons->addButton(Translated(TEXT_CANCEL), QDialogButtonBox::RejectRole)
        ->setAutoDefault(false);
    if (!GetTestedDriver().empty()) {
        m_test = buttons->addButton(Translated(TEXT_TEST), QDialogButtonBox::ActionRole);
        m_test->setAutoDefault(false);
        connect(m_test, &QPushButton::clicked, this, &DesktopForm::Test);
    }
    connect(buttons, &QDialogButtonBox::accepted, this, &DesktopForm::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &DesktopForm::reject);
    m_status = QuietLabel(Translated(TEXT_REQUIRED));
    layout->addWidget(m_status, 1);
    layout->addWidget(buttons);
    return bottom;
}

void DesktopForm::Follow() {
    if (m_ok == nullptr) {
        return;
    }
    bool isAcceptable = true;
    bool isTestable = true;
    for (const Row& row : m_rows) {
        QByteArray value = row.m_edit->text().toUtf8();
        const std::string_view text(value.constData(), static_cast<std::size_t>(value.size()));
        const char* const reason = WhyRefused(*row.m_field, text, m_values);
        ShowNote(row, IsOnlyMissing(*row.m_field, text) && !row.m_isEdited ? nullptr : reason);
        isAcceptable = isAcceptable && reason == nullptr;
        if (row.m_field->m_value == &DialogValues::m_dsn) {
            setWindowTitle(QString::fromUtf8(TitleFor(value.toStdString()).c_str()));
        } else {
            isTestable = isTestable && reason == nullptr;
        }
        value.fill('\0');
    }
    m_ok->setEnabled(isAcceptable);
    if (m_test != nullptr) {
        m_test->setEnabled(isTestable || m_tool.IsRunning());
        m_test->setText(Translated(m_tool.IsRunning() ? TEXT_STOP : TEXT_TEST));
        const std::string server = m_tested.toStdString();
        m_status->setText(m_tool.IsRunning()
                              ? QString::fromStdString(TranslateWith(TEXT_TESTING, server))
                              : Translated(TEXT_REQUIRED));
    }
}

DialogValues DesktopForm::Collect() const {
    DialogValues values;
    for (const Row& row : m_rows) {
        values.*row.m_field->m_value = row.m_edit->text().toStdU16String();
    }
    return values;
}

void DesktopForm::Test() {
    if (m_tool.IsRunning()) {
        return m_tool.Cancel();
    }
    const DialogValues values = Collect();
    m_tested = QString::fromStdU16String(*values.m_server);
    std::string text = MakeConnectionString(values);
    const WipeAtEnd<char> wipe(text);
    const QStringList arguments(std::begin(TEST_ARGUMENTS), std::end(TEST_ARGUMENTS));
    m_tool.Start(arguments, QByteArray::fromStdString(text), [this](const ToolResult& in_result) {
        Follow();
        if (in_result.m_text.isEmpty()) {
            return;  // stopped by the user
        }
        auto* box = new QMessageBox(this);
        box->setAttribute(Qt::WA_DeleteOnClose);
        box->setWindowTitle(windowTitle());
        box->setTextFormat(Qt::PlainText);
        box->setText(in_result.m_text);
        box->open();
    });
    Follow();
}

void DesktopForm::ShowNote(const Row& in_row, const char* in_reason) {
    const QString text = Translated(in_reason != nullptr ? in_reason : in_row.m_field->m_hint);
    in_row.m_note->setText(text);
    SetColor(*in_row.m_note, in_reason != nullptr ? ReasonColor(palette()) : QuietColor(palette()));
    in_row.m_edit->setAccessibleDescription(text);
}

QLabel* DesktopForm::QuietLabel(const QString& in_text) {
    m_quietLabels.push_back(SmallLabel(in_text, this));
    SetColor(*m_quietLabels.back(), QuietColor(palette()));
    return m_quietLabels.back();
}

void DesktopForm::accept() {
    if (!m_ok->isEnabled()) {
        return;
    }
    m_values = Collect();
    QDialog::accept();
}

bool DesktopForm::eventFilter(QObject* in_object, QEvent* in_event) {
    if (in_event->type() == QEvent::FocusIn) {
        m_area->ensureWidgetVisible(static_cast<QWidget*>(in_object));
    }
    // The accelerator of a disabled button would be inserted as text, unseen in a password.
    const bool isAccelerator = in_event->type() == QEvent::KeyPress &&
                               static_cast<QKeyEvent*>(in_event)->modifiers() == Qt::AltModifier &&
                               !static_cast<QKeyEvent*>(in_event)->text().isEmpty();
    return isAccelerator || QDialog::eventFilter(in_object, in_event);
}

void DesktopForm::changeEvent(QEvent* in_event) {
    QDialog::changeEvent(in_event);
    if (in_event->type() == QEvent::PaletteChange) {
        for (QLabel* label : m_quietLabels) {
            SetColor(*label, QuietColor(palette()));
        }
        Follow();
    }
}

}  // namespace Veltrane::ODBC
