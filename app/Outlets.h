#pragma once
// The on-screen objects that the controller refers to, set once when the interface is loaded. The controller keeps
// every one of them alive, and each accessor is indivisible; `labLoggedInAs` alone is a plain reference that owns
// nothing and is left alone when the controller goes.

#include "platform/controls/ArrayController.h"
#include "platform/controls/Controls.h"
#include "platform/controls/Outlet.h"

#include <memory>

class Outlets {
public:
    using ArrayController = platform::ArrayController;
    using Button = platform::Button;
    using RadioMatrix = platform::RadioMatrix;
    using TableView = platform::TableView;
    using TextField = platform::TextField;
    using Window = platform::Window;

    /// The plug-ins found by the scan; its selection is the selected plug-in.
    std::shared_ptr<ArrayController> myArrayController() const { return myArrayController_.get(); }
    void setMyArrayController(std::shared_ptr<ArrayController> object) { myArrayController_.set(std::move(object)); }

    /// The parameters offered for assignment; its selection is the one to assign.
    std::shared_ptr<ArrayController> arrayControllerPlistSelected() const
    {
        return arrayControllerPlistSelected_.get();
    }
    void setArrayControllerPlistSelected(std::shared_ptr<ArrayController> object)
    {
        arrayControllerPlistSelected_.set(std::move(object));
    }

    std::shared_ptr<TableView> pluginTableView() const { return pluginTableView_.get(); }
    void setPluginTableView(std::shared_ptr<TableView> object) { pluginTableView_.set(std::move(object)); }

    std::shared_ptr<TableView> tablePlistOfSelectedPlugin() const { return tablePlistOfSelectedPlugin_.get(); }
    void setTablePlistOfSelectedPlugin(std::shared_ptr<TableView> object)
    {
        tablePlistOfSelectedPlugin_.set(std::move(object));
    }

    std::shared_ptr<TextField> lab_PageCurrentlyDisplayed() const { return lab_PageCurrentlyDisplayed_.get(); }
    void setLab_PageCurrentlyDisplayed(std::shared_ptr<TextField> object)
    {
        lab_PageCurrentlyDisplayed_.set(std::move(object));
    }

    std::shared_ptr<TextField> labKOScreen_Title() const { return labKOScreen_Title_.get(); }
    void setLabKOScreen_Title(std::shared_ptr<TextField> object) { labKOScreen_Title_.set(std::move(object)); }

    /// Its text is the path that save, recall, upload and load act on.
    std::shared_ptr<TextField> labPluginPlistLocation() const { return labPluginPlistLocation_.get(); }
    void setLabPluginPlistLocation(std::shared_ptr<TextField> object)
    {
        labPluginPlistLocation_.set(std::move(object));
    }

    std::shared_ptr<TextField> kvControl1() const { return kvControl1_.get(); }
    void setKvControl1(std::shared_ptr<TextField> object) { kvControl1_.set(std::move(object)); }

    std::shared_ptr<TextField> kvControl2() const { return kvControl2_.get(); }
    void setKvControl2(std::shared_ptr<TextField> object) { kvControl2_.set(std::move(object)); }

    std::shared_ptr<TextField> kvControl3() const { return kvControl3_.get(); }
    void setKvControl3(std::shared_ptr<TextField> object) { kvControl3_.set(std::move(object)); }

    std::shared_ptr<TextField> kvControl4() const { return kvControl4_.get(); }
    void setKvControl4(std::shared_ptr<TextField> object) { kvControl4_.set(std::move(object)); }

    std::shared_ptr<TextField> kvControl5() const { return kvControl5_.get(); }
    void setKvControl5(std::shared_ptr<TextField> object) { kvControl5_.set(std::move(object)); }

    std::shared_ptr<TextField> kvControl6() const { return kvControl6_.get(); }
    void setKvControl6(std::shared_ptr<TextField> object) { kvControl6_.set(std::move(object)); }

    std::shared_ptr<TextField> kvControl7() const { return kvControl7_.get(); }
    void setKvControl7(std::shared_ptr<TextField> object) { kvControl7_.set(std::move(object)); }

    std::shared_ptr<TextField> kvControl8() const { return kvControl8_.get(); }
    void setKvControl8(std::shared_ptr<TextField> object) { kvControl8_.set(std::move(object)); }

    std::shared_ptr<Button> kvRotaryBtn1() const { return kvRotaryBtn1_.get(); }
    void setKvRotaryBtn1(std::shared_ptr<Button> object) { kvRotaryBtn1_.set(std::move(object)); }

    std::shared_ptr<Button> kvRotaryBtn2() const { return kvRotaryBtn2_.get(); }
    void setKvRotaryBtn2(std::shared_ptr<Button> object) { kvRotaryBtn2_.set(std::move(object)); }

    std::shared_ptr<Button> kvRotaryBtn3() const { return kvRotaryBtn3_.get(); }
    void setKvRotaryBtn3(std::shared_ptr<Button> object) { kvRotaryBtn3_.set(std::move(object)); }

    std::shared_ptr<Button> kvRotaryBtn4() const { return kvRotaryBtn4_.get(); }
    void setKvRotaryBtn4(std::shared_ptr<Button> object) { kvRotaryBtn4_.set(std::move(object)); }

    std::shared_ptr<Button> kvRotaryBtn5() const { return kvRotaryBtn5_.get(); }
    void setKvRotaryBtn5(std::shared_ptr<Button> object) { kvRotaryBtn5_.set(std::move(object)); }

    std::shared_ptr<Button> kvRotaryBtn6() const { return kvRotaryBtn6_.get(); }
    void setKvRotaryBtn6(std::shared_ptr<Button> object) { kvRotaryBtn6_.set(std::move(object)); }

    std::shared_ptr<Button> kvRotaryBtn7() const { return kvRotaryBtn7_.get(); }
    void setKvRotaryBtn7(std::shared_ptr<Button> object) { kvRotaryBtn7_.set(std::move(object)); }

    std::shared_ptr<Button> kvRotaryBtn8() const { return kvRotaryBtn8_.get(); }
    void setKvRotaryBtn8(std::shared_ptr<Button> object) { kvRotaryBtn8_.set(std::move(object)); }

    std::shared_ptr<RadioMatrix> kvPluginMode() const { return kvPluginMode_.get(); }
    void setKvPluginMode(std::shared_ptr<RadioMatrix> object) { kvPluginMode_.set(std::move(object)); }

    std::shared_ptr<TextField> mainTitle_Sub() const { return mainTitle_Sub_.get(); }
    void setMainTitle_Sub(std::shared_ptr<TextField> object) { mainTitle_Sub_.set(std::move(object)); }

    std::shared_ptr<TextField> labelHelperDisplay() const { return labelHelperDisplay_.get(); }
    void setLabelHelperDisplay(std::shared_ptr<TextField> object) { labelHelperDisplay_.set(std::move(object)); }

    std::shared_ptr<TextField> labTotalPagesIndicator() const { return labTotalPagesIndicator_.get(); }
    void setLabTotalPagesIndicator(std::shared_ptr<TextField> object)
    {
        labTotalPagesIndicator_.set(std::move(object));
    }

    /// Present in the interface, no operation touches it.
    std::shared_ptr<TextField> pageLimitWarning() const { return pageLimitWarning_.get(); }
    void setPageLimitWarning(std::shared_ptr<TextField> object) { pageLimitWarning_.set(std::move(object)); }

    std::shared_ptr<TextField> cwinUserName() const { return cwinUserName_.get(); }
    void setCwinUserName(std::shared_ptr<TextField> object) { cwinUserName_.set(std::move(object)); }

    std::shared_ptr<TextField> cwinPinCode() const { return cwinPinCode_.get(); }
    void setCwinPinCode(std::shared_ptr<TextField> object) { cwinPinCode_.set(std::move(object)); }

    std::shared_ptr<Button> kv_btn_cloudLibrary() const { return kv_btn_cloudLibrary_.get(); }
    void setKv_btn_cloudLibrary(std::shared_ptr<Button> object) { kv_btn_cloudLibrary_.set(std::move(object)); }

    std::shared_ptr<Button> kv_btn_cloudLibraryDownload() const { return kv_btn_cloudLibraryDownload_.get(); }
    void setKv_btn_cloudLibraryDownload(std::shared_ptr<Button> object)
    {
        kv_btn_cloudLibraryDownload_.set(std::move(object));
    }

    /// Not owned: whoever sets it keeps it alive as long as the controller.
    TextField* labLoggedInAs() const { return labLoggedInAs_; }
    void setLabLoggedInAs(TextField* label) { labLoggedInAs_ = label; }

    std::shared_ptr<TextField> cwinUserNameNew() const { return cwinUserNameNew_.get(); }
    void setCwinUserNameNew(std::shared_ptr<TextField> object) { cwinUserNameNew_.set(std::move(object)); }

    std::shared_ptr<TextField> cwinEmailAddrNew() const { return cwinEmailAddrNew_.get(); }
    void setCwinEmailAddrNew(std::shared_ptr<TextField> object) { cwinEmailAddrNew_.set(std::move(object)); }

    std::shared_ptr<TextField> cwinUploadComments() const { return cwinUploadComments_.get(); }
    void setCwinUploadComments(std::shared_ptr<TextField> object) { cwinUploadComments_.set(std::move(object)); }

    std::shared_ptr<TextField> cwinUploadedComments() const { return cwinUploadedComments_.get(); }
    void setCwinUploadedComments(std::shared_ptr<TextField> object) { cwinUploadedComments_.set(std::move(object)); }

    /// No operation uses it.
    std::shared_ptr<Window> cwinMainWindow() const { return cwinMainWindow_.get(); }
    void setCwinMainWindow(std::shared_ptr<Window> object) { cwinMainWindow_.set(std::move(object)); }

    std::shared_ptr<Window> cwinDownloadWindow() const { return cwinDownloadWindow_.get(); }
    void setCwinDownloadWindow(std::shared_ptr<Window> object) { cwinDownloadWindow_.set(std::move(object)); }

    std::shared_ptr<Window> cwinUploadWindow() const { return cwinUploadWindow_.get(); }
    void setCwinUploadWindow(std::shared_ptr<Window> object) { cwinUploadWindow_.set(std::move(object)); }

    std::shared_ptr<Window> cwinCloudWindow() const { return cwinCloudWindow_.get(); }
    void setCwinCloudWindow(std::shared_ptr<Window> object) { cwinCloudWindow_.set(std::move(object)); }

    std::shared_ptr<TableView> cwinPlistAvailable() const { return cwinPlistAvailable_.get(); }
    void setCwinPlistAvailable(std::shared_ptr<TableView> object) { cwinPlistAvailable_.set(std::move(object)); }

    /// The shared mappings listed; its selection is the one to download.
    std::shared_ptr<ArrayController> arrayController_downloadList() const
    {
        return arrayController_downloadList_.get();
    }
    void setArrayController_downloadList(std::shared_ptr<ArrayController> object)
    {
        arrayController_downloadList_.set(std::move(object));
    }

private:
    platform::Outlet<ArrayController> myArrayController_;
    platform::Outlet<ArrayController> arrayControllerPlistSelected_;
    platform::Outlet<TableView> pluginTableView_;
    platform::Outlet<TableView> tablePlistOfSelectedPlugin_;
    platform::Outlet<TextField> lab_PageCurrentlyDisplayed_;
    platform::Outlet<TextField> labKOScreen_Title_;
    platform::Outlet<TextField> labPluginPlistLocation_;
    platform::Outlet<TextField> kvControl1_;
    platform::Outlet<TextField> kvControl2_;
    platform::Outlet<TextField> kvControl3_;
    platform::Outlet<TextField> kvControl4_;
    platform::Outlet<TextField> kvControl5_;
    platform::Outlet<TextField> kvControl6_;
    platform::Outlet<TextField> kvControl7_;
    platform::Outlet<TextField> kvControl8_;
    platform::Outlet<Button> kvRotaryBtn1_;
    platform::Outlet<Button> kvRotaryBtn2_;
    platform::Outlet<Button> kvRotaryBtn3_;
    platform::Outlet<Button> kvRotaryBtn4_;
    platform::Outlet<Button> kvRotaryBtn5_;
    platform::Outlet<Button> kvRotaryBtn6_;
    platform::Outlet<Button> kvRotaryBtn7_;
    platform::Outlet<Button> kvRotaryBtn8_;
    platform::Outlet<RadioMatrix> kvPluginMode_;
    platform::Outlet<TextField> mainTitle_Sub_;
    platform::Outlet<TextField> labelHelperDisplay_;
    platform::Outlet<TextField> labTotalPagesIndicator_;
    platform::Outlet<TextField> pageLimitWarning_;
    platform::Outlet<TextField> cwinUserName_;
    platform::Outlet<TextField> cwinPinCode_;
    platform::Outlet<Button> kv_btn_cloudLibrary_;
    platform::Outlet<Button> kv_btn_cloudLibraryDownload_;
    TextField* labLoggedInAs_ = nullptr;
    platform::Outlet<TextField> cwinUserNameNew_;
    platform::Outlet<TextField> cwinEmailAddrNew_;
    platform::Outlet<TextField> cwinUploadComments_;
    platform::Outlet<TextField> cwinUploadedComments_;
    platform::Outlet<Window> cwinMainWindow_;
    platform::Outlet<Window> cwinDownloadWindow_;
    platform::Outlet<Window> cwinUploadWindow_;
    platform::Outlet<Window> cwinCloudWindow_;
    platform::Outlet<TableView> cwinPlistAvailable_;
    platform::Outlet<ArrayController> arrayController_downloadList_;
};
