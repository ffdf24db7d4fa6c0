#pragma once
// Layouts of the three community windows. Makes widgets only; wiring is done elsewhere.

class QWidget;

namespace interface {

/// Log in, and ask for an account.
QWidget* makeAccountWindow();
/// A comment and the upload.
QWidget* makeUploadWindow();
/// What others shared for the plug-in, with their comments, and the load.
QWidget* makeDownloadWindow();

} // namespace interface
