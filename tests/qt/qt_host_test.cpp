// A Qt host as the applications are: a main window, the library's dialogs and event loop
// installed, and the library called from the host's thread and from a worker. Run on an X
// display (tests/desktop/qt_host_test.sh); every wait is bounded.
#include <gtest/gtest.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QMainWindow>
#include <QMessageBox>
#include <QScreen>
#include <QTest>
#include <QTimer>
#include <functional>
#include <thread>

#include "orvogeneric/classes.hpp"
#include "orvogeneric/desktop.hpp"
#include "orvogeneric/error_reports.hpp"
#include "orvogeneric/qt.hpp"
#include "orvogeneric/user_interface.hpp"

namespace orvo {
namespace {

// Runs act on the modal window that the call opens, once it is up, then lets the call return.
void whenModalOpens(const std::function<void(QWidget*)>& act) {
  auto* poll = new QTimer;
  poll->setInterval(20);
  QObject::connect(poll, &QTimer::timeout, [poll, act] {
    QWidget* modal = QApplication::activeModalWidget();
    if (modal == nullptr || !modal->isVisible()) return;
    poll->stop();
    poll->deleteLater();
    act(modal);
  });
  poll->start();
}

void press(QWidget* window, Qt::Key key) {
  window->activateWindow();
  QTest::keyClick(window, key);
}

class QtHost : public ::testing::Test {
 protected:
  void SetUp() override {
    window_.setWindowTitle("Host");
    window_.setGeometry(200, 150, 900, 700);
    window_.show();
    window_.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window_));
  }
  QMainWindow window_;
};

TEST_F(QtHost, MessageBoxesAnswerWithTheDefaultAndTheEscapeButtons) {
  struct Case {
    std::int32_t style;
    MsgBoxResult onReturn;
    MsgBoxResult onEscape;
  };
  const Case cases[] = {
      {vbOKOnly, vbOK, vbOK},
      {vbOKCancel | vbExclamation, vbOK, vbCancel},
      {vbOKCancel | vbDefaultButton2, vbCancel, vbCancel},
      {vbAbortRetryIgnore | vbDefaultButton3 | vbCritical, vbIgnore, vbIgnore},
      {vbYesNoCancel | vbDefaultButton2 | vbQuestion, vbNo, vbCancel},
      {vbYesNo | vbInformation, vbYes, vbYes},
      {vbRetryCancel, vbRetry, vbCancel},
  };
  for (const auto& c : cases) {
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape}) {
      QString caption;
      whenModalOpens([&](QWidget* box) {
        caption = box->windowTitle();
        press(box, key);
        // A box that Escape cannot close (Yes/No, Abort/Retry/Ignore) is then answered with
        // Return, its default.
        QTimer::singleShot(300, box, [box] {
          if (box->isVisible()) press(box, Qt::Key_Return);
        });
      });
      const MsgBoxResult got = userInterface()->messageBox(u"Question?", u"Caption", c.style);
      EXPECT_EQ(got, key == Qt::Key_Return ? c.onReturn : c.onEscape)
          << "style " << c.style << (key == Qt::Key_Return ? " Return" : " Escape");
      EXPECT_EQ(caption, "Caption");
    }
  }
}

TEST_F(QtHost, AWorkersBoxIsShownOnTheApplicationsThread) {
  MsgBoxResult got{};
  std::thread worker([&] { got = userInterface()->messageBox(u"From a worker", u"W", vbYesNo); });
  bool shownOnGuiThread = false;
  whenModalOpens([&](QWidget* box) {
    shownOnGuiThread = box->thread() == QApplication::instance()->thread();
    press(box, Qt::Key_Return);
  });
  QElapsedTimer clock;
  clock.start();
  while (got == MsgBoxResult{} && clock.elapsed() < 10000) QTest::qWait(20);
  worker.join();
  EXPECT_TRUE(shownOnGuiThread);
  EXPECT_EQ(got, vbYes);
}

TEST_F(QtHost, TheErrorDialogIsCentredOverTheActiveWindow) {
  QRect dialog;
  whenModalOpens([&](QWidget* d) {
    dialog = d->geometry();
    press(d, Qt::Key_Return);
  });
  ReportError(u"Host", u"Something failed");
  const QRect over = window_.frameGeometry();
  // The design size at the screen's resolution, centred on the window's outer rectangle.
  const double tpp = 1440.0 / window_.screen()->logicalDotsPerInchY();
  EXPECT_EQ(dialog.size(), QSize(qRound(7200 / tpp), qRound(2295 / tpp)));
  EXPECT_NEAR(dialog.center().x(), over.center().x(), 1.0) << "over " << over.x();
  EXPECT_NEAR(dialog.center().y(), over.center().y(), 1.0) << "over " << over.y();
}

TEST_F(QtHost, TimersTickThroughTheHostsLoopAndStop) {
  FactoryMethods factory;
  const auto timer = factory.GetTimer(50);
  int ticks = 0;
  timer->OnTimer([&] { ++ticks; });
  QTest::qWait(200);
  EXPECT_EQ(ticks, 0) << "handed out stopped";
  timer->Enabled(VBool::True);
  QTest::qWait(1000);
  const int inASecond = ticks;
  EXPECT_GE(inASecond, 15);
  EXPECT_LE(inASecond, 21);
  timer->Enabled(VBool::False);
  QTest::qWait(300);
  EXPECT_EQ(ticks, inASecond) << "no tick after Enabled = False";
}

TEST_F(QtHost, FilePathCompletionOnAnEditOfTheHost) {
  auto* edit = new QLineEdit(&window_);
  window_.setCentralWidget(edit);
  const auto hwnd = static_cast<std::int32_t>(edit->winId());
  EXPECT_EQ(userInterface()->autoCompleteFilePaths(hwnd, 1), 0);
  EXPECT_NE(edit->completer(), nullptr);
  EXPECT_LT(userInterface()->autoCompleteFilePaths(static_cast<std::int32_t>(window_.winId()), 1),
            0)
      << "a window that is not an edit";
}

// The desktop's window states on a host's own window, as the spreadsheet program's window is
// minimised, maximised and shown normal.
TEST_F(QtHost, TheDesktopMinimisesMaximisesAndRestoresAWindow) {
  const auto d = desktop();
  const auto w = static_cast<WindowHandle>(window_.winId());
  struct Step {
    ShowCommand command;
    bool iconic;
    bool zoomed;
  };
  const Step steps[] = {{ShowCommand::Minimize, true, false},
                        {ShowCommand::Maximize, false, true},
                        {ShowCommand::Minimize, true, true},
                        {ShowCommand::ShowNormal, false, false}};
  for (const auto& step : steps) {
    d->showWindow(w, step.command);
    QElapsedTimer clock;
    clock.start();
    while ((d->isIconic(w) != step.iconic || d->isZoomed(w) != step.zoomed) &&
           clock.elapsed() < 5000) {
      QTest::qWait(20);
    }
    EXPECT_EQ(d->isIconic(w), step.iconic) << static_cast<int>(step.command);
    EXPECT_EQ(d->isZoomed(w), step.zoomed) << static_cast<int>(step.command);
  }
}

}  // namespace
}  // namespace orvo

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  orvo::qt::installDialogs();
  orvo::qt::installEventLoop();
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
