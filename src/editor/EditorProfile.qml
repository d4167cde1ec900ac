pragma Singleton
import QtWebEngine

// The editor page's web profile: nothing kept on disk, spelling checked in French and English.
WebEngineProfile {
    offTheRecord: true
    spellCheckEnabled: true
    spellCheckLanguages: ["fr-FR", "en-US"]
}
