#pragma once

#include <string>

namespace NSCam {

/** The camera framework's key-to-text store, for instance of the running application's name. */
class ATMsEventMgr {
  public:
    static ATMsEventMgr* getInstance();

    virtual ~ATMsEventMgr() = default;

    /**
     * Fetches the text under a key. Any thread.
     *
     * @param key for instance "APP_NAME"
     * @param value receives the text, empty when there is none
     * @return whether the key was there
     */
    virtual bool getString(std::string const& key, std::string& value) = 0;
};

}  // namespace NSCam
