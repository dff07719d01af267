#pragma once

// What the user interface shows about automatic updates. The numbers are those in the settings store.
namespace DAXAutoUpdateKey {

enum AUTOUPDATE_STATUS : int {
    AUTOUPDATE_STATUS_NONE = 0,
    AUTOUPDATE_STATUS_CHECKING = 1,
    AUTOUPDATE_STATUS_DOWNLOADING = 2,
    AUTOUPDATE_STATUS_DOWNLOADED = 3,
    AUTOUPDATE_STATUS_INSTALLING = 4,
    AUTOUPDATE_STATUS_INSTALLED = 5,
    AUTOUPDATE_STATUS_FAILED = 6,
    AUTOUPDATE_STATUS_CANCELLED = 7
};

enum AUTOUPDATE_SPECIAL_MODE : int { AUTOUPDATE_SPECIAL_MODE_OFF = 0, AUTOUPDATE_SPECIAL_MODE_ON = 1 };

} // namespace DAXAutoUpdateKey
