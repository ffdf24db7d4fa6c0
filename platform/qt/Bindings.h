#pragma once
// Ties an observable control to the widget that shows it. A binding lives as long as the widget and keeps the control
// alive meanwhile.

#include "platform/Http.h"
#include "platform/controls/ArrayController.h"
#include "platform/controls/Controls.h"

#include <memory>

class QAction;
class QButtonGroup;
class QLabel;
class QLineEdit;
class QProgressBar;
class QWidget;

namespace platform::qt {

class LongTextField;

/// The label shows text and tool tip; it is never read.
void bind(const std::shared_ptr<TextField>& field, QLabel* label);
/// The field holds what is typed and the edit shows what is set.
void bind(const std::shared_ptr<TextField>& field, QLineEdit* edit);
void bind(const std::shared_ptr<TextField>& field, LongTextField* edit);
/// The button is pressed when the action is triggered, and enabled as the action is.
void bind(const std::shared_ptr<Button>& button, QAction* action);
/// The group's button ids are the cells' tags.
void bind(const std::shared_ptr<RadioMatrix>& matrix, QButtonGroup* group);
/// Showing, closing, raising and centring go to the widget; closing by the user comes back.
void bind(const std::shared_ptr<Window>& window, QWidget* widget);
/// The bar shows how far the downloads are, and itself while one runs. The property may go first.
void bind(Property<DownloadProgress>& progress, QProgressBar* bar);
/// The edit narrows the controller's rows while one types.
void bindFilter(const std::shared_ptr<ArrayController>& controller, QLineEdit* edit);

} // namespace platform::qt
