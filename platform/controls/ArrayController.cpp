#include "platform/controls/ArrayController.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace platform {

ArrayController::ArrayController() : filterChanged_(filterText.onChange([this](const std::string&) { rearrange(); })) {}

void ArrayController::setContent(std::vector<Record> content)
{
    setSharedContent(std::make_shared<const std::vector<Record>>(std::move(content)));
}

void ArrayController::setSharedContent(SharedRecords content)
{
    content_ = std::move(content);
    ++contentRevision_;
    selectionIndex_ = kNoSelection; // before the arrangement, which may ask for the selection
    arrange();
    arrangedChanged.emit();
    selectionChanged.emit();
}

void ArrayController::addObjects(std::vector<Record> records)
{
    if (!content_->empty())
        records.insert(records.begin(), content_->begin(), content_->end());
    content_ = std::make_shared<const std::vector<Record>>(std::move(records));
    ++contentRevision_;
    rearrange();
}

void ArrayController::setArrangement(Arrangement arrangement)
{
    arrangement_ = std::move(arrangement);
    rearrange();
}

void ArrayController::rearrange()
{
    const Record* selected = selection();
    const auto position = static_cast<std::size_t>(selected ? selected - content_->data() : 0);
    arrange();
    if (selected) {
        const auto row = std::find(arranged_.begin(), arranged_.end(), position);
        selectionIndex_ = row != arranged_.end() ? static_cast<std::int32_t>(row - arranged_.begin()) : kNoSelection;
    }
    arrangedChanged.emit();
    selectionChanged.emit();
}

void ArrayController::arrange()
{
    if (arrangement_) {
        arranged_ = arrangement_(*this);
        return;
    }
    arranged_.resize(content_->size());
    std::iota(arranged_.begin(), arranged_.end(), std::size_t{0});
}

const Record* ArrayController::arrangedObject(std::int32_t row) const
{
    if (row < 0 || row >= arrangedCount())
        return nullptr;
    return &(*content_)[arranged_[static_cast<std::size_t>(row)]];
}

void ArrayController::setSelectionIndex(std::int32_t row)
{
    select(row >= 0 && row < arrangedCount() ? row : kNoSelection);
}

void ArrayController::selectNext()
{
    if (selectionIndex_ != kNoSelection && selectionIndex_ + 1 < arrangedCount())
        select(selectionIndex_ + 1);
}

void ArrayController::select(std::int32_t row)
{
    if (row == selectionIndex_)
        return;
    selectionIndex_ = row;
    selectionChanged.emit();
}

std::string ArrayController::selectionText(std::string_view key) const
{
    const Record* selected = selection();
    return std::string(selected ? selected->text(key) : std::string_view());
}

} // namespace platform
