#include <nscam/ATMsEventMgr.h>

#include <map>
#include <mutex>
#include <shared_mutex>

#include "host/metadata/EventText.h"

namespace {

class EventStore final : public NSCam::ATMsEventMgr {
  public:
    static EventStore& instance() {
        static EventStore store;
        return store;
    }

    bool getString(std::string const& key, std::string& value) override {
        std::shared_lock<std::shared_mutex> const lock(mLock);
        auto const found = mTexts.find(key);
        if (found == mTexts.end()) {
            value.clear();
            return false;
        }
        value = found->second;
        return true;
    }

    void set(std::string const& key, std::string const& value) {
        std::unique_lock<std::shared_mutex> const lock(mLock);
        mTexts[key] = value;
    }

    void clear(std::string const& key) {
        std::unique_lock<std::shared_mutex> const lock(mLock);
        mTexts.erase(key);
    }

  private:
    std::shared_mutex mLock;
    std::map<std::string, std::string> mTexts;  // under mLock
};

}  // namespace

NSCam::ATMsEventMgr* NSCam::ATMsEventMgr::getInstance() {
    return &EventStore::instance();
}

namespace quen::host {

void setEventString(std::string const& key, std::string const& value) {
    EventStore::instance().set(key, value);
}

void clearEventString(std::string const& key) {
    EventStore::instance().clear(key);
}

}  // namespace quen::host
