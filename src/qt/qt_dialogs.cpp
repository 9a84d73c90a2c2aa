#include <QAbstractButton>
#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QCompleter>
#include <QFileSystemModel>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMessageBox>
#include <QThread>
#include <functional>
#include <future>

#include "error_dialog_widget.hpp"
#include "orvogeneric/qt.hpp"
#include "orvogeneric/user_interface.hpp"
#include "qt_text.hpp"

namespace orvo::qt {

namespace {

// Widgets live on the application's thread; a report raised on a worker is shown from there,
// the worker waiting for the answer as it would for a modal box of its own. The work travels as
// an event to an object of that thread; an event dropped unrun (the application ending) leaves
// the default answer.
class CallEvent final : public QEvent {
 public:
  static constexpr QEvent::Type kType = QEvent::User;
  explicit CallEvent(std::function<void()> work) : QEvent(kType), work_(std::move(work)) {}
  void run() { work_(); }
  std::future<void> finished() { return done_.get_future(); }
  ~CallEvent() override { done_.set_value(); }
  CallEvent(const CallEvent&) = delete;
  CallEvent& operator=(const CallEvent&) = delete;

 private:
  std::function<void()> work_;
  std::promise<void> done_;
};

class GuiThreadCaller final : public QObject {
 public:
  bool event(QEvent* e) override {
    if (e->type() != CallEvent::kType) return QObject::event(e);
    static_cast<CallEvent*>(e)->run();
    return true;
  }

  template <typename Result>
  Result call(const std::function<Result()>& work) {
    if (QThread::currentThread() == thread()) return work();
    Result result{};
    auto* event = new CallEvent([&] { result = work(); });
    std::future<void> finished = event->finished();
    QCoreApplication::postEvent(this, event);  // Qt owns the event from here
    finished.wait();
    return result;
  }
};

struct ButtonSet {
  QMessageBox::StandardButton buttons[3];
  int count;
};

MsgBoxResult answerOf(QMessageBox::StandardButton button) {
  switch (button) {
    case QMessageBox::Ok:
      return vbOK;
    case QMessageBox::Cancel:
      return vbCancel;
    case QMessageBox::Abort:
      return vbAbort;
    case QMessageBox::Retry:
      return vbRetry;
    case QMessageBox::Ignore:
      return vbIgnore;
    case QMessageBox::Yes:
      return vbYes;
    case QMessageBox::No:
      return vbNo;
    default:
      return vbCancel;
  }
}

// Ctrl+C copies the box in the platform's message-box form, as users have always copied them.
// A box without Cancel and with more than one button (Yes/No, Abort/Retry/Ignore) cannot be
// dismissed without an answer: Escape only beeps and the window cannot be closed.
class CopyableMessageBox final : public QMessageBox {
 public:
  using QMessageBox::QMessageBox;
  bool mustAnswer = false;

 protected:
  void closeEvent(QCloseEvent* event) override {
    if (mustAnswer && clickedButton() == nullptr) {
      event->ignore();
      return;
    }
    QMessageBox::closeEvent(event);
  }
  void keyPressEvent(QKeyEvent* event) override {
    if (mustAnswer && event->key() == Qt::Key_Escape) {
      QApplication::beep();
      return;
    }
    if (!event->matches(QKeySequence::Copy)) {
      QMessageBox::keyPressEvent(event);
      return;
    }
    const QString rule = QStringLiteral("---------------------------\r\n");
    QString buttonsText;
    for (QAbstractButton* b : buttons())
      buttonsText += b->text().remove(u'&') + QStringLiteral("   ");
    QGuiApplication::clipboard()->setText(rule + windowTitle() + QStringLiteral("\r\n") + rule +
                                          text() + QStringLiteral("\r\n") + rule + buttonsText +
                                          QStringLiteral("\r\n") + rule);
  }
};

class QtUserInterface final : public UserInterface {
 public:
  template <typename Result>
  Result onGuiThread(const std::function<Result()>& work) {
    return caller_.call(work);
  }

  MsgBoxResult messageBox(std::u16string_view text, std::u16string_view caption,
                          std::int32_t style) override {
    const String body(text);
    const String title(caption);
    return onGuiThread<MsgBoxResult>([&] { return showBox(body, title, style); });
  }

  void beep() override {
    onGuiThread<int>([] {
      QApplication::beep();
      return 0;
    });
  }

  std::int32_t autoCompleteFilePaths(std::int32_t hwnd, std::int32_t /*flags*/) override {
    return onGuiThread<std::int32_t>([hwnd] {
      constexpr std::int32_t kInvalidArgument = static_cast<std::int32_t>(0x80070057U);
      auto* edit = qobject_cast<QLineEdit*>(QWidget::find(static_cast<WId>(hwnd)));
      if (edit == nullptr) return kInvalidArgument;
      // The file system's own case rules: names differing in case are different files here.
      auto* model = new QFileSystemModel(edit);
      model->setRootPath(QString());
      auto* completer = new QCompleter(model, edit);
      completer->setCompletionMode(QCompleter::PopupCompletion);
      edit->setCompleter(completer);
      return std::int32_t{0};
    });
  }

  void showErrorReport(const ErrorReportShown& report) override {
    onGuiThread<int>([&report] {
      ErrorDialogWidget dialog(report, QApplication::activeWindow());
      // The pointer is the normal arrow while the dialog is up, whatever the host had set.
      QApplication::setOverrideCursor(Qt::ArrowCursor);
      dialog.exec();
      QApplication::restoreOverrideCursor();
      return 0;
    });
  }

 private:
  GuiThreadCaller caller_;  // made on the application's thread, where installDialogs runs

  static MsgBoxResult showBox(const String& text, const String& caption, std::int32_t style) {
    static constexpr ButtonSet kSets[6] = {
        {{QMessageBox::Ok}, 1},
        {{QMessageBox::Ok, QMessageBox::Cancel}, 2},
        {{QMessageBox::Abort, QMessageBox::Retry, QMessageBox::Ignore}, 3},
        {{QMessageBox::Yes, QMessageBox::No, QMessageBox::Cancel}, 3},
        {{QMessageBox::Yes, QMessageBox::No}, 2},
        {{QMessageBox::Retry, QMessageBox::Cancel}, 2}};
    const ButtonSet& set = kSets[(style & 7) <= 5 ? style & 7 : 0];
    CopyableMessageBox box(QApplication::activeWindow());
    box.setText(toQ(text));
    // An empty title is the application's, as the boxes of the applications' language had it.
    box.setWindowTitle(caption.empty() ? QGuiApplication::applicationDisplayName() : toQ(caption));
    switch (style & 0x70) {
      case vbCritical:
        box.setIcon(QMessageBox::Critical);
        break;
      case vbQuestion:
        box.setIcon(QMessageBox::Question);
        break;
      case vbExclamation:
        box.setIcon(QMessageBox::Warning);
        break;
      case vbInformation:
        box.setIcon(QMessageBox::Information);
        break;
      default:
        box.setIcon(QMessageBox::NoIcon);
        break;
    }
    for (int i = 0; i < set.count; ++i) box.addButton(set.buttons[i]);
    const int chosen = (style >> 8) & 3;
    box.setDefaultButton(set.buttons[chosen < set.count ? chosen : 0]);
    // Closing the box is Cancel where there is one, else the only button.
    box.mustAnswer = set.count > 1;
    if (set.count == 1) box.setEscapeButton(set.buttons[0]);
    for (int i = 0; i < set.count; ++i) {
      if (set.buttons[i] == QMessageBox::Cancel) {
        box.setEscapeButton(QMessageBox::Cancel);
        box.mustAnswer = false;
      }
    }
    box.exec();
    auto* clicked = box.clickedButton();
    return clicked != nullptr ? answerOf(box.standardButton(clicked)) : answerOf(set.buttons[0]);
  }
};

}  // namespace

void installDialogs() { setUserInterface(std::make_shared<QtUserInterface>()); }

}  // namespace orvo::qt
