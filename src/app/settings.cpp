#include "app/settings.h"

#include <mutex>

#include "app/ini_file.h"
#include "app/ini_text.h"
#include "app/settings_keys.h"
#include "platform/save_file.h"

namespace quillon {

namespace {

constexpr const char* kSection = "chess";
constexpr const char* kWarning = "Warning";
constexpr std::size_t kMaxPathCharacters = 260;

std::mutex g_fileMutex; // of every file of settings

/// The first characters of a UTF-8 text.
std::string FirstCharacters(std::string text, std::size_t nMost) {
    std::size_t characters = 0;
    for (std::size_t place = 0; place < text.size(); ++place) {
        const bool bBegins = (static_cast<unsigned char>(text[place]) & 0xC0) != 0x80;
        if (bBegins && ++characters > nMost) {
            text.resize(place);
            break;
        }
    }
    return text;
}

/// Takes a key over from the file. Its field has the default.
class CSettingReader {
  public:
    CSettingReader(const CIniText& ini, const TSettingKey& key, TSettings& settings)
        : m_ini(ini), m_key(key), m_settings(settings) {}

    void operator()(bool TSettings::*field) const {
        if (const auto number = m_ini.Integer(kSection, m_key.m_name))
            m_settings.*field = *number != 0;
    }

    void operator()(int TSettings::*field) const {
        if (const auto number = m_ini.Integer(kSection, m_key.m_name))
            m_settings.*field = m_key.m_accept(*number, m_settings.*field - m_key.m_nHeldMore) + m_key.m_nHeldMore;
    }

    void operator()(std::string TSettings::*field) const {
        if (const auto text = m_ini.Value(kSection, m_key.m_name))
            m_settings.*field = FirstCharacters(*text, kMaxPathCharacters);
    }

  private:
    const CIniText& m_ini;
    const TSettingKey& m_key;
    TSettings& m_settings;
};

/// A key as the file has it.
class CSettingText {
  public:
    CSettingText(const TSettingKey& key, const TSettings& settings) : m_key(key), m_settings(settings) {}

    std::string operator()(bool TSettings::*field) const { return m_settings.*field ? "1" : "0"; }
    std::string operator()(int TSettings::*field) const {
        return std::to_string(m_settings.*field - m_key.m_nHeldMore);
    }
    std::string operator()(std::string TSettings::*field) const { return m_settings.*field; }

  private:
    const TSettingKey& m_key;
    const TSettings& m_settings;
};

/// There must be packed data before anything can be packed anew.
void LowerRecompression(TSettings& settings, INotifier& notifier) {
    if (settings.m_nAskForGlobalRegisterRecompression <= settings.m_nUseDataPackedForRandomAccess)
        return;
    notifier.Inform("Value of parameter AskForGlobalRegisterRecompression should not be greater than "
                    "UseDataPackedForRandomAccess.",
                    kWarning);
    settings.m_nAskForGlobalRegisterRecompression = settings.m_nUseDataPackedForRandomAccess;
}

template <class TKeys>
std::error_code SaveKeys(const TSettings& settings, const TKeys& keys, const std::filesystem::path& path) {
    const std::lock_guard lock(g_fileMutex);
    std::string text;
    if (const std::error_code failure = ReadIniFile(path, text))
        return failure; // writing would lose what is there
    for (const std::string_view name : keys) {
        const std::size_t index = IndexOfSettingKey(name);
        if (index == kSettingKeys.size())
            return std::make_error_code(std::errc::invalid_argument);
        const TSettingKey& key = kSettingKeys[index];
        text = WithIniValue(std::move(text), kSection, name, std::visit(CSettingText(key, settings), key.m_field));
    }
    return SaveFile(path, text, /*bBackup=*/false).m_error;
}

} // namespace

const std::filesystem::path& WorkingFolder() {
    static const std::filesystem::path folder = [] {
        std::error_code removed; // a folder that is gone has no settings
        return std::filesystem::current_path(removed);
    }();
    return folder;
}

const std::filesystem::path& SettingsPath() {
    static const std::filesystem::path path = WorkingFolder() / "options.ini";
    return path;
}

TSettings LoadSettings(INotifier& notifier, const TSettings& defaults, const std::filesystem::path& path) {
    std::string text;
    {
        const std::lock_guard lock(g_fileMutex);
        if (ReadIniFile(path, text))
            return defaults;
    }
    const CIniText ini(text);
    TSettings settings = defaults;
    for (const TSettingKey& key : kSettingKeys)
        std::visit(CSettingReader(ini, key, settings), key.m_field);
    LowerRecompression(settings, notifier);
    return settings;
}

std::error_code SaveSettings(const TSettings& settings, const std::filesystem::path& path) {
    return SaveKeys(settings, kSavedKeys, path);
}

std::error_code SaveSetting(const TSettings& settings, std::string_view key, const std::filesystem::path& path) {
    return SaveKeys(settings, std::array{key}, path);
}

void WarnOfFullLog(const TSettings& settings, INotifier& notifier) {
    if (settings.m_bLogMoves)
        notifier.Inform("Program has been opened with the option to write log of full analysis - this option is not "
                        "recommended (it makes solving last much longer and produces large log files)",
                        kWarning);
}

} // namespace quillon
