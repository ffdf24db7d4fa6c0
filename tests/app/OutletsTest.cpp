// Which of the controller's references own what they refer to, and what unconnected ones do.

#include "tests/support/WindowTest.h"

#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace test {

namespace {

/// Sets every owned outlet of a controller to an object of the test's and hands a weak reference to each back.
class OutletOwner {
public:
    explicit OutletOwner(Outlets& outlets) : outlets_(outlets) {}

    template <typename T>
    void connect(void (Outlets::*set)(std::shared_ptr<T>), std::shared_ptr<T> (Outlets::*get)() const)
    {
        auto object = std::make_shared<T>();
        (outlets_.*set)(object);
        EXPECT_EQ((outlets_.*get)(), object);
        objects.push_back(object);
    }

    std::vector<std::weak_ptr<void>> objects;

private:
    Outlets& outlets_;
};

std::vector<std::weak_ptr<void>> connectAll(Outlets& outlets)
{
    OutletOwner owner(outlets);
    owner.connect(&Outlets::setMyArrayController, &Outlets::myArrayController);
    owner.connect(&Outlets::setArrayControllerPlistSelected, &Outlets::arrayControllerPlistSelected);
    owner.connect(&Outlets::setPluginTableView, &Outlets::pluginTableView);
    owner.connect(&Outlets::setTablePlistOfSelectedPlugin, &Outlets::tablePlistOfSelectedPlugin);
    owner.connect(&Outlets::setLab_PageCurrentlyDisplayed, &Outlets::lab_PageCurrentlyDisplayed);
    owner.connect(&Outlets::setLabKOScreen_Title, &Outlets::labKOScreen_Title);
    owner.connect(&Outlets::setLabPluginPlistLocation, &Outlets::labPluginPlistLocation);
    owner.connect(&Outlets::setKvControl1, &Outlets::kvControl1);
    owner.connect(&Outlets::setKvControl2, &Outlets::kvControl2);
    owner.connect(&Outlets::setKvControl3, &Outlets::kvControl3);
    owner.connect(&Outlets::setKvControl4, &Outlets::kvControl4);
    owner.connect(&Outlets::setKvControl5, &Outlets::kvControl5);
    owner.connect(&Outlets::setKvControl6, &Outlets::kvControl6);
    owner.connect(&Outlets::setKvControl7, &Outlets::kvControl7);
    owner.connect(&Outlets::setKvControl8, &Outlets::kvControl8);
    owner.connect(&Outlets::setKvRotaryBtn1, &Outlets::kvRotaryBtn1);
    owner.connect(&Outlets::setKvRotaryBtn2, &Outlets::kvRotaryBtn2);
    owner.connect(&Outlets::setKvRotaryBtn3, &Outlets::kvRotaryBtn3);
    owner.connect(&Outlets::setKvRotaryBtn4, &Outlets::kvRotaryBtn4);
    owner.connect(&Outlets::setKvRotaryBtn5, &Outlets::kvRotaryBtn5);
    owner.connect(&Outlets::setKvRotaryBtn6, &Outlets::kvRotaryBtn6);
    owner.connect(&Outlets::setKvRotaryBtn7, &Outlets::kvRotaryBtn7);
    owner.connect(&Outlets::setKvRotaryBtn8, &Outlets::kvRotaryBtn8);
    owner.connect(&Outlets::setKvPluginMode, &Outlets::kvPluginMode);
    owner.connect(&Outlets::setMainTitle_Sub, &Outlets::mainTitle_Sub);
    owner.connect(&Outlets::setLabelHelperDisplay, &Outlets::labelHelperDisplay);
    owner.connect(&Outlets::setLabTotalPagesIndicator, &Outlets::labTotalPagesIndicator);
    owner.connect(&Outlets::setPageLimitWarning, &Outlets::pageLimitWarning);
    owner.connect(&Outlets::setCwinUserName, &Outlets::cwinUserName);
    owner.connect(&Outlets::setCwinPinCode, &Outlets::cwinPinCode);
    owner.connect(&Outlets::setKv_btn_cloudLibrary, &Outlets::kv_btn_cloudLibrary);
    owner.connect(&Outlets::setKv_btn_cloudLibraryDownload, &Outlets::kv_btn_cloudLibraryDownload);
    owner.connect(&Outlets::setCwinUserNameNew, &Outlets::cwinUserNameNew);
    owner.connect(&Outlets::setCwinEmailAddrNew, &Outlets::cwinEmailAddrNew);
    owner.connect(&Outlets::setCwinUploadComments, &Outlets::cwinUploadComments);
    owner.connect(&Outlets::setCwinUploadedComments, &Outlets::cwinUploadedComments);
    owner.connect(&Outlets::setCwinMainWindow, &Outlets::cwinMainWindow);
    owner.connect(&Outlets::setCwinDownloadWindow, &Outlets::cwinDownloadWindow);
    owner.connect(&Outlets::setCwinUploadWindow, &Outlets::cwinUploadWindow);
    owner.connect(&Outlets::setCwinCloudWindow, &Outlets::cwinCloudWindow);
    owner.connect(&Outlets::setCwinPlistAvailable, &Outlets::cwinPlistAvailable);
    owner.connect(&Outlets::setArrayController_downloadList, &Outlets::arrayController_downloadList);
    return owner.objects;
}

std::vector<std::string> names(const char* text)
{
    std::istringstream stream(text);
    return {std::istream_iterator<std::string>(stream), {}};
}

} // namespace

using OutletsTest = WindowTest;

TEST_F(OutletsTest, TheControllerKeepsFortyTwoObjectsAliveAndReleasesThem)
{
    auto destroyed = std::make_unique<ViewController>(platform());
    const auto objects = connectAll(*destroyed);
    ASSERT_EQ(objects.size(), 42U);
    for (const auto& object : objects)
        EXPECT_FALSE(object.expired());
    destroyed.reset();
    for (const auto& object : objects)
        EXPECT_TRUE(object.expired());
}

TEST_F(OutletsTest, TheLogInLabelIsOnlyReferredTo)
{
    const auto label = std::make_shared<platform::TextField>();
    label->stringValue.set("still here");
    auto destroyed = std::make_unique<ViewController>(platform());
    destroyed->setLabLoggedInAs(label.get());
    EXPECT_EQ(destroyed->labLoggedInAs(), label.get());
    EXPECT_EQ(label.use_count(), 1);
    destroyed.reset();
    EXPECT_EQ(label.use_count(), 1);
    EXPECT_EQ(label->stringValue.get(), "still here");
}

TEST_F(OutletsTest, MessagesToOutletsThatNobodyConnectedDoNothing)
{
    ViewController unconnected(platform());
    unconnected.closeAllAuxillaryWindows();
    unconnected.populateKnobLabels(1);
    unconnected.kvLoginToCloudAccount();
    unconnected.viewDidLoad();
    unconnected.plugInSelected();
    unconnected.kvRotBtn1_Pressed();
    EXPECT_EQ(unconnected.labLoggedInAs(), nullptr);
}

TEST_F(OutletsTest, EveryObjectOnScreenCarriesItsOutletsName)
{
    launch();
    for (const std::string& name :
         names("pluginTableView tablePlistOfSelectedPlugin lab_PageCurrentlyDisplayed labKOScreen_Title "
               "labPluginPlistLocation kvControl1 kvControl8 kvRotaryBtn1 kvRotaryBtn8 kvPluginMode kvPluginMode_1 "
               "kvPluginMode_0 mainTitle_Sub labelHelperDisplay labTotalPagesIndicator pageLimitWarning cwinUserName "
               "cwinPinCode kv_btn_cloudLibrary kv_btn_cloudLibraryDownload labLoggedInAs cwinUserNameNew "
               "cwinEmailAddrNew cwinUploadComments cwinUploadedComments cwinMainWindow cwinDownloadWindow "
               "cwinUploadWindow cwinCloudWindow cwinPlistAvailable parameterSearch"))
        EXPECT_NO_THROW(find(name.c_str())) << name;
    for (const char* window : {"cwinMainWindow", "cwinDownloadWindow", "cwinUploadWindow", "cwinCloudWindow"})
        EXPECT_TRUE(find(window)->isWindow()) << window;
}

TEST_F(OutletsTest, EveryActionOfTheWindowHasAControlOfItsName)
{
    launch();
    for (const std::string& name :
         names("btnRunCheck prevPageButtonPressed nextPageButtonPressed firstPageButtonPressed lastPageButtonPressed "
               "newPageButtonPressed deletePageButtonPressed clearAllPagesButtonPressed kvExportToPlist "
               "kvRecallOriginalMapping kvRecallPreviousMapping kvCreateChart kvLoginToCloudAccount "
               "kvCommunityUploadBtn kvCommunityLoadSelectedDownload kvHelpMe kvMovePage_First kvMovePage_Last "
               "kvMovePage_Prev kvMovePage_Next cwinLoginAttempt cwinNewUserCreate"))
        EXPECT_NO_THROW(find(name.c_str())) << name;
}

} // namespace test
