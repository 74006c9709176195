#include <gtest/gtest.h>
#include <ki/store/GNode.h>
#include <ki/tools/GSettings.h>

#include <QSettings>

#include "LoggedTest.h"

using ki::qt::GSettings;
using ki::store::GNode;

TEST_F(SettingsTest, CheckUpdateConfig) {
    const struct Row {
        const char* name;
        unsigned stored;  // 0: a fresh store
        bool expected_result;
        unsigned expected_stored;
        bool marker_survives;
    } rows[] = {
        {"fresh store reads 0, clears and stores 3", 0, true, 3, false},
        {"same version, as on the second run, clears nothing", 3, false, 3, true},
        {"older stored version is cleared", 2, true, 3, false},
        {"newer stored version is left alone", 5, false, 5, true},
    };
    GSettings& settings = GSettings::instance();
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        settings.clear_config();
        if (row.stored) settings.set_config_version(row.stored);
        settings.set("marker", 1);
        EXPECT_EQ(settings.check_update_config(3, true), row.expected_result);
        EXPECT_EQ(settings.get_config_version(), row.expected_stored);
        EXPECT_EQ(settings.contains("marker"), row.marker_survives);
    }
}

// The window's node through the file is read back by the hostile-settings test's row of the
// program's own file; the application's node is read back here.
TEST_F(SettingsTest, AppNodeSurvivesTheStoreAndASecondReader) {
    GSettings& settings = GSettings::instance();
    GNode app;
    app.set("lang", 94);
    settings.set_app_node(app);
    EXPECT_EQ(settings.get_app_node(), app);

    settings.sync();
    // A separate reader of the same store, as the next run of the program would be.
    QSettings second(settings.organizationName(), settings.applicationName());
    EXPECT_EQ(second.fileName().toStdString(), settings.fileName().toStdString());
    EXPECT_EQ(GNode::from_base_64_string(second.value("GApplication/app").toString()), app);
}

// The reasons for refusing a stored text are checked with GNode itself; here only that the store
// hands out an empty node and says why exactly once.
TEST_F(SettingsTest, UnreadableNodeGivesEmptyNode) {
    GSettings& settings = GSettings::instance();
    EXPECT_TRUE(settings.get_window_node(QStringLiteral("Broken")).is_empty());
    EXPECT_FALSE(capture->contains("from_qstring")) << "a missing key is no error";
    settings.setValue("Window/Broken", QStringLiteral("not a node at all"));
    EXPECT_TRUE(settings.get_window_node(QStringLiteral("Broken")).is_empty());
    EXPECT_EQ(capture->count("from_qstring, base64 decode failed"), 1) << capture->text();
}
