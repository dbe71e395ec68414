#include "VeltraneDialog/editors/DesktopForm.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QScreen>
#include <QStyleFactory>

namespace Veltrane::ODBC {
namespace {

/// Without a display; the end-to-end tests cover what needs one.
class DesktopFormTest : public testing::Test {
protected:
    DesktopFormTest() {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        m_application = std::make_unique<QApplication>(m_argumentCount, m_arguments);
        m_values.m_dsn = u"sales";
        m_values.m_server = u"bi";
        m_values.m_database = u"retail";
        m_values.m_pwd = u"geheim";
    }

    static QLineEdit* Edit(const QDialog& in_form, const char* in_label) {
        for (auto* edit : in_form.findChildren<QLineEdit*>()) {
            if (edit->accessibleName() == QLatin1String(in_label)) {
                return edit;
            }
        }
        throw std::logic_error("no such field");
    }

    static QAbstractButton* Button(const QDialog& in_form, const char* in_text) {
        for (auto* button : in_form.findChildren<QAbstractButton*>()) {
            if (button->text() == QLatin1String(in_text)) {
                return button;
            }
        }
        throw std::logic_error("no such button");
    }

    static void Press(QWidget* in_target, int in_key, Qt::KeyboardModifiers in_modifiers,
                      const QString& in_text) {
        QKeyEvent event(QEvent::KeyPress, in_key, in_modifiers, in_text);
        QApplication::sendEvent(in_target, &event);
    }

    int m_argumentCount = 1;
    char m_name[5] = "test";
    char* m_arguments[2] = {m_name, nullptr};
    std::unique_ptr<QApplication> m_application;
    DialogValues m_values;
};

TEST_F(DesktopFormTest, OkIsEnabledOnlyWhileEveryFieldIsAccepted) {
    DesktopForm form(m_values);
    const QAbstractButton* ok = Button(form, "&OK");
    EXPECT_TRUE(ok->isEnabled());
    const std::tuple<const char*, QString, QString> cases[] = {
        {"Name", "a[b", "A name cannot contain [ ] { } ( ) , ; ? * = ! @ \\"},
        {"Server", "", "Has to be filled."},
        // Longer than a widget's default limit, which would truncate it.
        {"Server", QString(100000, 'x'), "Too long: a value has at most 259 characters."},
        {"Password", "x ", "Blanks at the beginning or the end cannot be stored."},
    };
    for (const auto& [label, text, reason] : cases) {
        SCOPED_TRACE(label);
        QLineEdit* const edit = Edit(form, label);
        const QString before = edit->text();
        edit->setText(text);
        EXPECT_FALSE(ok->isEnabled());
        EXPECT_EQ(edit->accessibleDescription(), reason);
        edit->setText(before);
        EXPECT_TRUE(ok->isEnabled());
        EXPECT_NE(edit->accessibleDescription(), reason);
    }
}

TEST_F(DesktopFormTest, AcceptedValuesComeBackExactly) {
    // Also loaded values that a user cannot enter.
    const std::u16string odd = std::u16string(300, u'x') + u"\t\x01\x7F\r\v\x85\xFFFD ";
    m_values.m_uid = odd;
    m_values.m_cognosNamespace = odd;
    DesktopForm form(m_values);
    Edit(form, "Server")->setText(QString::fromUtf16(u"日本 \U0001F600 &amp; <b>"));
    Edit(form, "MicroStrategy login mode")->setText("standard");
    EXPECT_EQ(m_values.m_server, u"bi") << "changed before OK";
    form.accept();
    EXPECT_EQ(form.result(), QDialog::Accepted);
    EXPECT_EQ(m_values.m_server, u"日本 \U0001F600 &amp; <b>");
    EXPECT_EQ(m_values.m_microStrategyLoginMode, u"standard");
    EXPECT_EQ(m_values.m_uid, odd);
    EXPECT_EQ(m_values.m_cognosNamespace, odd);
    EXPECT_EQ(m_values.m_pwd, u"geheim");
}

TEST_F(DesktopFormTest, TheFieldsScrollIfTheScreenIsTooSmall) {
    QFont font = QApplication::font();
    font.setPointSize(40);
    QApplication::setFont(font);
    DesktopForm form(m_values);
    form.show();
    const QSize room = form.screen()->availableSize();
    EXPECT_LE(form.height(), room.height());
    EXPECT_LE(form.width(), room.width());
    const auto isInSight = [](const QWidget* in_widget) {
        return in_widget->visibleRegion().boundingRect().height() == in_widget->height();
    };
    EXPECT_TRUE(isInSight(Button(form, "&OK")));
    for (const DialogField& field : DIALOG_FIELDS) {
        SCOPED_TRACE(field.m_key);
        QLineEdit* const edit = Edit(form, QString(field.m_label).remove('&').toLatin1());
        edit->setFocus();
        QApplication::processEvents();
        EXPECT_TRUE(isInSight(edit));
    }
}

TEST_F(DesktopFormTest, ThePasswordIsShownOnlyOnRequest) {
    DesktopForm form(m_values);
    const QLineEdit* const password = Edit(form, "Password");
    EXPECT_EQ(password->echoMode(), QLineEdit::Password);
    Button(form, "S&how password")->click();
    EXPECT_EQ(password->echoMode(), QLineEdit::Normal);
    Button(form, "S&how password")->click();
    EXPECT_EQ(password->echoMode(), QLineEdit::Password);
}

TEST_F(DesktopFormTest, TheLoginModeIsAChoiceOrOwnText) {
    m_values.m_microStrategyLoginMode = u"Kerberos";
    DesktopForm form(m_values);
    auto* const choice = form.findChild<QComboBox*>();
    ASSERT_NE(choice, nullptr);
    EXPECT_EQ(choice->currentText(), "Kerberos");
    EXPECT_EQ(choice->count(), static_cast<int>(LOGIN_MODES.size()));
    choice->setCurrentIndex(1);
    form.accept();
    EXPECT_EQ(m_values.m_microStrategyLoginMode, u"LDAP");
}

TEST_F(DesktopFormTest, AnAcceleratorNeverBecomesText) {
    DesktopForm form(m_values);
    QLineEdit* const password = Edit(form, "Password");
    Press(password, Qt::Key_O, Qt::AltModifier, "o");
    EXPECT_EQ(password->text(), "geheim");
    password->setCursorPosition(6);
    Press(password, Qt::Key_At, Qt::ControlModifier | Qt::AltModifier | Qt::GroupSwitchModifier,
          "@");
    Press(password, Qt::Key_O, Qt::NoModifier, "o");
    EXPECT_EQ(password->text(), "geheim@o");
}

/// The difference of brightness, at most 255, of a text that its background shines through.
int Contrast(const QColor& in_text, const QColor& in_background) {
    return std::abs(qGray(in_text.rgb()) - qGray(in_background.rgb())) * in_text.alpha() / 255;
}

TEST_F(DesktopFormTest, NotesAreReadableOnLightAndDarkAndAfterAChange) {
    DesktopForm form(m_values);
    Edit(form, "Name")->setText("a[b");
    for (const QColor& window : {QColor(0xEF, 0xEF, 0xEF), QColor(0x2A, 0x2E, 0x32)}) {
        SCOPED_TRACE(window.name().toStdString());
        QApplication::setPalette(QPalette(window));
        QApplication::processEvents();
        for (const auto* label : form.findChildren<QLabel*>()) {
            SCOPED_TRACE(label->text().toStdString());
            const QColor background = form.palette().color(QPalette::Window);
            ASSERT_EQ(background, window);
            const QColor text = label->palette().color(QPalette::WindowText);
            EXPECT_GT(Contrast(text, background), 125) << "what the W3C asks for";
        }
    }
}

}  // namespace
}  // namespace Veltrane::ODBC
