#include "platform/controls/ArrayController.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace platform {

namespace {

std::int32_t rowFrom(const std::vector<std::int32_t>& rows, std::int32_t row)
{
    const auto after = std::ranges::lower_bound(rows, row);
    if (after != rows.end())
        return *after;
    return rows.empty() ? ArrayController::kNoSelection : rows.back();
}

} // namespace

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
    selectedRows_.clear();
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
    std::vector<bool> isSelected(content_->size());
    const Record* current = selection();
    for (const Record* selected : selectedObjects())
        isSelected[static_cast<std::size_t>(selected - content_->data())] = true;
    arrange();
    selectedRows_.clear();
    selectionIndex_ = kNoSelection;
    for (std::size_t row = 0; row < arranged_.size(); ++row) {
        if (!isSelected[arranged_[row]])
            continue;
        selectedRows_.push_back(static_cast<std::int32_t>(row));
        if (&(*content_)[arranged_[row]] == current)
            selectionIndex_ = selectedRows_.back();
    }
    if (selectionIndex_ == kNoSelection && !selectedRows_.empty())
        selectionIndex_ = selectedRows_.front();
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
    if (row >= 0 && row < arrangedCount())
        select({row}, row);
    else
        select({}, kNoSelection);
}

void ArrayController::selectNext()
{
    if (selectionIndex_ != kNoSelection && selectionIndex_ + 1 < arrangedCount())
        setSelectionIndex(selectionIndex_ + 1);
}

void ArrayController::setSelectedRows(std::vector<std::int32_t> rows, std::int32_t current)
{
    const auto isOneOf = [&rows](std::int32_t row) { return std::ranges::binary_search(rows, row); };
    if (!isOneOf(current) && isOneOf(selectionIndex_))
        current = selectionIndex_;
    else if (!isOneOf(current))
        current = rowFrom(rows, current);
    select(std::move(rows), current);
}

std::vector<const Record*> ArrayController::selectedObjects() const
{
    std::vector<const Record*> objects;
    objects.reserve(selectedRows_.size());
    for (const std::int32_t row : selectedRows_)
        objects.push_back(arrangedObject(row));
    return objects;
}

void ArrayController::select(std::vector<std::int32_t> rows, std::int32_t current)
{
    if (current == selectionIndex_ && rows == selectedRows_)
        return;
    selectedRows_ = std::move(rows);
    selectionIndex_ = current;
    selectionChanged.emit();
}

std::string ArrayController::selectionText(std::string_view key) const
{
    const Record* selected = selection();
    return std::string(selected ? selected->text(key) : std::string_view());
}

} // namespace platform
