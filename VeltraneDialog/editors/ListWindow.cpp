#include "VeltraneDialog/editors/ListWindow.h"

#include <QCloseEvent>
#include <QHeaderView>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
#include <QShortcut>
#include <QTreeView>
#include <QVBoxLayout>

#include "VeltraneDialog/DialogFields.h"
#include "VeltraneDialog/editors/QtText.h"

namespace Veltrane::ODBC {

namespace {

constexpr int IS_SYSTEM = Qt::UserRole;
constexpr int IS_HIDDEN = Qt::UserRole + 1;

QString With(const char* in_text, const QString& in_name) {
    return QString::fromStdString(TranslateWith(in_text, in_name.toStdString()));
}

}  // namespace

ListWindow::ListWindow() {
    setWindowTitle(Translated(VELTRANE_TEXT("ODBC data sources (Veltrane)")));
    setWindowIcon(QIcon::fromTheme(QStringLiteral("veltrane-dsn")));
    auto* columns = new QHBoxLayout;
    columns->addWidget(BuildList(), 1);
    columns->addWidget(BuildButtons());
    m_status = new QLabel(this);
    m_status->setTextFormat(Qt::PlainText);
    m_status->setWordWrap(true);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(columns, 1);
    layout->addWidget(m_status);
    resize(QSize(760, 420).boundedTo(screen()->availableSize() * 9 / 10));
    new QShortcut(QKeySequence::Refresh, this, [this] { Reload(); });
    new QShortcut(
        QKeySequence::Delete, m_list, [this] { Remove(); }, Qt::WidgetShortcut);
    m_list->setFocus();
    Follow();
}

QWidget* ListWindow::BuildList() {
    auto* area = new QWidget(this);
    m_filtered.setSourceModel(&m_model);
    m_filtered.setFilterKeyColumn(-1);
    m_filtered.setFilterCaseSensitivity(Qt::CaseInsensitive);
    m_filter = new QLineEdit(area);
    auto* label = new QLabel(Translated(VELTRANE_TEXT("&Filter")), area);
    label->setBuddy(m_filter);
    m_filter->setAccessibleName(label->text().remove(QLatin1Char('&')));
    m_list = new QTreeView(area);
    m_list->setAccessibleName(Translated(VELTRANE_TEXT("Data sources")));
    m_list->setModel(&m_filtered);
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    m_list->setAllColumnsShowFocus(true);
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_list->setSortingEnabled(true);
    m_list->sortByColumn(0, Qt::AscendingOrder);
    auto* top = new QHBoxLayout;
    top->addWidget(label);
    top->addWidget(m_filter);
    auto* layout = new QVBoxLayout(area);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(top);
    layout->addWidget(m_list);
    connect(m_filter, &QLineEdit::textChanged, this, [this](const QString& in_text) {
        const Selected selected = GetSelected();
        m_filtered.setFilterFixedString(in_text);
        Select(selected);
        Follow();
    });
    connect(m_list->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            [this] { Follow(); });
    connect(m_list, &QTreeView::activated, this, [this] { Edit(); });
    return area;
}

QPushButton* ListWindow::AddButton(const char* in_text, void (ListWindow::*in_action)()) {
    auto* button = new QPushButton(Translated(in_text), this);
    button->setAutoDefault(false);
    if (in_action != nullptr) {
        connect(button, &QPushButton::clicked, this, [this, in_action] { (this->*in_action)(); });
        m_onSelected.push_back(button);
    }
    return button;
}

QWidget* ListWindow::BuildButtons() {
    auto* area = new QWidget(this);
    m_add = AddButton(VELTRANE_TEXT("&Add"), nullptr);
    auto* scopes = new QMenu(m_add);
    for (const bool isSystem : {false, true}) {
        const char* const text =
            isSystem ? VELTRANE_TEXT("For &all users") : VELTRANE_TEXT("For &this user");
        scopes->addAction(Translated(text), this, [this, isSystem] {
            Run({QStringLiteral("edit")}, isSystem, {}, Translated(TEXT_TITLE_NEW), {});
        });
    }
    m_add->setMenu(scopes);
    auto* layout = new QVBoxLayout(area);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_add);
    layout->addWidget(AddButton(VELTRANE_TEXT("&Edit"), &ListWindow::Edit));
    layout->addWidget(AddButton(VELTRANE_TEXT("C&opy"), &ListWindow::Copy));
    layout->addWidget(AddButton(VELTRANE_TEXT("&Remove"), &ListWindow::Remove));
    m_test = AddButton(TEXT_TEST, &ListWindow::Test);
    layout->addWidget(m_test);
    layout->addStretch(1);
    QPushButton* const close = AddButton(VELTRANE_TEXT("&Close"), nullptr);
    connect(close, &QPushButton::clicked, this, &QWidget::close);
    layout->addWidget(close);
    return area;
}

ListWindow::Selected ListWindow::GetSelected() const {
    const QModelIndex index = m_list->currentIndex().siblingAtColumn(0);
    return {index.data().toString(), index.data(IS_SYSTEM).toBool()};
}

void ListWindow::Select(const Selected& in_dsn) {
    for (int row = 0; row < m_filtered.rowCount(); ++row) {
        const QModelIndex index = m_filtered.index(row, 0);
        if (index.data().toString() != in_dsn.m_name ||
            index.data(IS_SYSTEM).toBool() != in_dsn.m_isSystem) {
            continue;
        }
        m_list->setCurrentIndex(index);
        return;
    }
    m_list->setCurrentIndex(m_filtered.index(0, 0));
}

void ListWindow::Reload() {
    if (m_tool.IsRunning()) return;
    m_tool.Start({QStringLiteral("list"), QStringLiteral("--both"), QStringLiteral("--json")}, {},
                 [this](const ToolResult& in_result) {
                     Fill(in_result.m_output);
                     if (in_result.m_code != 0) m_status->setText(in_result.m_text);
                     Follow();
                 });
    Follow();
}

void ListWindow::Fill(const QByteArray& in_list) {
    const Selected selected = GetSelected();
    m_model.clear();
    m_model.setHorizontalHeaderLabels({Translated(VELTRANE_TEXT("Data source")),
                                       Translated(VELTRANE_TEXT("For")),
                                       QString::fromStdString(TranslatePlain("&Server")),
                                       QString::fromStdString(TranslatePlain("Data&base"))});
    const QJsonArray dsns = QJsonDocument::fromJson(in_list)[QLatin1String("dsns")].toArray();
    for (const QJsonValue& dsn : dsns) {
        const bool isSystem = dsn[QLatin1String("scope")].toString() == QLatin1String("system");
        const bool isHidden = dsn[QLatin1String("relation")].toString() == QLatin1String("hidden");
        const QString scope = Translated(isHidden   ? VELTRANE_TEXT("all other users")
                                         : isSystem ? VELTRANE_TEXT("all users")
                                                    : VELTRANE_TEXT("this user"));
        auto* name = new QStandardItem(dsn[QLatin1String("name")].toString());
        name->setData(isSystem, IS_SYSTEM);
        name->setData(isHidden, IS_HIDDEN);
        m_model.appendRow({name, new QStandardItem(scope),
                           new QStandardItem(dsn[QLatin1String("server")].toString()),
                           new QStandardItem(dsn[QLatin1String("database")].toString())});
    }
    for (int column = 0; column < 3; ++column) m_list->resizeColumnToContents(column);
    m_status->setText(dsns.isEmpty() ? Translated(VELTRANE_TEXT("There is no data source yet."))
                                     : QString());
    Select(selected);
}

void ListWindow::Run(QStringList in_command, bool in_isSystem, const QString& in_name,
                     const QString& in_busyText, std::function<void(const ToolResult&)> in_done) {
    if (m_tool.IsRunning()) return;
    if (in_isSystem && in_command.front() != QLatin1String("test")) {
        in_command << QStringLiteral("--system");
    }
    if (!in_name.isEmpty()) in_command << QStringLiteral("--") << in_name;
    m_tool.Start(in_command, {}, [this, done = std::move(in_done)](const ToolResult& in_result) {
        m_status->clear();
        if (done) {
            done(in_result);
        } else if (in_result.m_code != 0) {
            MakeBox(in_result.m_text)->open();
        }
        Reload();
        m_list->setFocus();
    });
    m_status->setText(in_busyText);
    Follow();
}

void ListWindow::RunOnSelected(const QStringList& in_command, const char* in_busyText) {
    const Selected dsn = GetSelected();
    if (!dsn.m_name.isEmpty()) {
        Run(in_command, dsn.m_isSystem, dsn.m_name, With(in_busyText, dsn.m_name), {});
    }
}

void ListWindow::Edit() { RunOnSelected({QStringLiteral("edit")}, TEXT_TITLE); }

void ListWindow::Copy() {
    RunOnSelected({QStringLiteral("edit"), QStringLiteral("--copy")}, TEXT_TITLE);
}

void ListWindow::Remove() {
    const Selected dsn = GetSelected();
    if (dsn.m_name.isEmpty() || m_tool.IsRunning()) return;
    QMessageBox* const box = MakeBox(With(VELTRANE_TEXT("Remove the data source %s?"), dsn.m_name));
    QPushButton* const yes = box->addButton(Translated(TEXT_YES), QMessageBox::AcceptRole);
    QPushButton* const no = box->addButton(Translated(TEXT_NO), QMessageBox::RejectRole);
    box->setDefaultButton(no);
    box->setEscapeButton(no);
    connect(yes, &QPushButton::clicked, this,
            [this, dsn] { Run({QStringLiteral("remove")}, dsn.m_isSystem, dsn.m_name, {}, {}); });
    box->open();
}

void ListWindow::Test() {
    if (m_isTesting) return m_tool.Cancel();
    const Selected dsn = GetSelected();
    if (dsn.m_name.isEmpty() || m_tool.IsRunning()) return;
    m_isTesting = true;
    Run({QStringLiteral("test")}, dsn.m_isSystem, dsn.m_name, With(TEXT_TESTING, dsn.m_name),
        [this](const ToolResult& in_result) {
            m_isTesting = false;
            if (!in_result.m_text.isEmpty()) MakeBox(in_result.m_text)->open();
        });
}

void ListWindow::Follow() {
    const bool isBusy = m_tool.IsRunning();
    const bool isSelected = m_list->currentIndex().isValid();
    m_add->setEnabled(!isBusy);
    for (QPushButton* button : m_onSelected) button->setEnabled(isSelected && !isBusy);
    // A test connects by name, which would reach the data source that hides this one.
    const bool isHidden = m_list->currentIndex().siblingAtColumn(0).data(IS_HIDDEN).toBool();
    m_test->setEnabled(m_isTesting || (m_test->isEnabled() && !isHidden));
    m_test->setText(Translated(m_isTesting ? TEXT_STOP : TEXT_TEST));
}

QMessageBox* ListWindow::MakeBox(const QString& in_text) {
    auto* box = new QMessageBox(this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowTitle(windowTitle());
    box->setTextFormat(Qt::PlainText);
    box->setText(in_text);
    return box;
}

/// Stays open while an editor runs, because its input would be lost.
void ListWindow::closeEvent(QCloseEvent* in_event) {
    if (!m_tool.IsRunning() || m_isTesting) return QWidget::closeEvent(in_event);
    in_event->ignore();
}

}  // namespace Veltrane::ODBC
