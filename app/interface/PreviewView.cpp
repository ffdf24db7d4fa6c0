#include "app/interface/PreviewView.h"

#include "app/ViewController.h"
#include "app/interface/Interface.h"
#include "app/interface/PreviewModel.h"
#include "mapping/Comparison.h"
#include "mapping/EditingState.h"
#include "mapping/ParameterOrder.h"
#include "platform/qt/RecordSort.h"
#include "platform/qt/Text.h"

#include <QAccessible>
#include <QAction>
#include <QLabel>
#include <QLocale>
#include <QStackedWidget>
#include <QTableView>

#include <string_view>
#include <utility>

namespace interface {

namespace qt = platform::qt;
using State = ViewController::SharedPreview::State;

PreviewView::PreviewView(ViewController& controller, const Interface& loaded)
    : controller_(controller),
      places_(loaded.find<QStackedWidget>("sharedPreview")),
      hint_(loaded.find<QLabel>("previewHint")),
      summary_(loaded.find<QLabel>("previewSummary")),
      preview_(loaded.find<QAction>("previewShared")),
      model_(new PreviewModel(this))
{
    loaded.find<QTableView>("previewTable")->setModel(model_);
    const auto window = controller_.cwinDownloadWindow();
    const auto list = controller_.arrayController_downloadList();
    connections_.push_back(controller_.sharedPreviewChanged.connect([this] { show(); }));
    connections_.push_back(controller_.editingChanged.connect([this] { followEdit(); }));
    connections_.push_back(list->arrangedChanged.connect([this] { enable(); }));
    connections_.push_back(list->selectionChanged.connect([this] { enable(); }));
    connections_.push_back(window->visible.onChange([this](bool isVisible) {
        if (!isVisible)
            controller_.endPreview();
        enable();
    }));
    show();
    enable();
}

void PreviewView::enable()
{
    preview_->setEnabled(controller_.cwinDownloadWindow()->visible.get() &&
                         controller_.arrayController_downloadList()->selection());
}

void PreviewView::show()
{
    const ViewController::SharedPreview& preview = controller_.sharedPreview();
    const bool isShown = preview.state == State::shown;
    QString hint;
    switch (preview.state) {
    case State::none:
        hint = tr("Select a mapping and press \u201cPreview\u201d to look at it without loading it.");
        break;
    case State::fetching: hint = tr("Fetching the mapping\u2026"); break;
    case State::unreachable:
        hint = tr("The mapping could not be fetched: %1").arg(qt::toQt(preview.description));
        break;
    case State::refused: hint = tr("The community server refused the mapping (status %1)").arg(preview.status); break;
    case State::unreadable: hint = tr("What the community server sent is no mapping"); break;
    case State::shown: break;
    }
    hint_->setText(hint);
    model_->setEntries(preview.mapping.entries);
    differences_ = mapping::Differences(preview.mapping.entries);
    countedIn_ = {};
    followEdit();
    places_->setCurrentIndex(isShown ? 1 : 0);
    if (preview.state == State::none || preview.state == State::fetching)
        return;
    QAccessibleEvent told(isShown ? summary_ : hint_, QAccessible::Alert);
    QAccessible::updateAccessibility(&told);
}

void PreviewView::followEdit()
{
    const ViewController::SharedPreview& preview = controller_.sharedPreview();
    if (preview.state != State::shown)
        return;
    const QLocale locale;
    const std::int32_t pages = preview.mapping.totalPages;
    QStringList parts;
    parts << (preview.mapping.mode != mapping::kModeInsertEffect ? tr("Instrument mode") : tr("Insert/Effect mode"));
    parts << (pages == 1 ? tr("1 page") : tr("%1 pages").arg(locale.toString(pages)));
    if (!controller_.isMappingLoaded()) {
        model_->setOther({}, {});
        parts << tr("no plug-in is loaded to compare with");
    } else {
        if (const auto here = controller_.offeredParameters(); std::exchange(countedIn_, here) != here)
            count_ = panel::countOffered(preview.mapping.entries, *here, [](std::string_view name) {
                return qt::fromQt(qt::foldedForSearch(qt::toQt(name)));
            });
        differences_.follow(mapping::plistBuild);
        const auto pots = differences_.positions().size();
        parts << tr("%1 of %2 offered here").arg(locale.toString(count_.placed), locale.toString(count_.wanted));
        parts << (pots == 0   ? tr("no pot differs from the mapping being edited")
                  : pots == 1 ? tr("1 pot differs from the mapping being edited")
                              : tr("%1 pots differ from the mapping being edited").arg(locale.toString(pots)));
        model_->setOther(mapping::plistBuild, differences_.positions());
    }
    summary_->setText(parts.join(QStringLiteral(" \u00b7 ")));
}

} // namespace interface
