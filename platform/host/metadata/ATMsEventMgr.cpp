#include <nscam/ATMsEventMgr.h>

#include <map>

#include "host/base/Mutex.h"
#include "host/metadata/EventText.h"

namespace {

class EventStore final : public NSCam::ATMsEventMgr {
  public:
    static EventStore& instance() {
        static EventStore store;
        return store;
    }

    bool getString(std::string const& key, std::string& value) override {
        quen::host::ReaderLock const lock(mLock);
        auto const found = mTexts.find(key);
        if (found == mTexts.end()) {
            value.clear();
            return false;
        }
        value = found->second;
        return true;
    }

    void set(std::string const& key, std::string const& value) {
        quen::host::WriterLock const lock(mLock);
        mTexts[key] = value;
    }

    void clear(std::string const& key) {
        quen::host::WriterLock const lock(mLock);
        mTexts.erase(key);
    }

  private:
    quen::host::SharedMutex mLock;
    std::map<std::string, std::string> mTexts HOST_GUARDED_BY(mLock);
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
