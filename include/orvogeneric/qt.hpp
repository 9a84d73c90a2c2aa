#pragma once

// The library's Qt 6 module (libORVOGenericQt, CMake target ORVOGeneric::qt): the dialogs and the
// event loop for a host written with Qt Widgets. A host calls both once, on the thread that runs
// its QApplication, after making it; the core library itself stays free of any toolkit.
#if !defined(_WIN32)
#define ORVO_QT_API __attribute__((visibility("default")))
#elif defined(ORVO_QT_BUILDING)
#define ORVO_QT_API __declspec(dllexport)
#else
#define ORVO_QT_API __declspec(dllimport)
#endif

namespace orvo::qt {

// Message boxes, the error dialog and file-path completion become Qt widgets, modal over the
// host's active window. Calls from other threads are carried to the application's thread.
ORVO_QT_API void installDialogs();
// Timer objects tick through QTimer on the thread that made them, which must run a Qt event loop.
ORVO_QT_API void installEventLoop();

}  // namespace orvo::qt

// For programs without Qt of their own (the orvo tool loads the module when it shows a report):
// makes a QApplication on the X display, installs the dialogs, chooses the error log when logPath
// is not null, and shows the report of ReportError, returning once it is closed. Returns 0, or 1
// when no display could be opened (nothing shown).
extern "C" ORVO_QT_API int orvo_qt_report_error(const char16_t* procedure, const char16_t* message,
                                                const char16_t* logPath);
