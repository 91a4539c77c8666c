// The widget's own words; those of the document come with it.

import Foundation

enum Words {
  /// The code of the user's first language: "de".
  static let language: String = {
    let first = Locale.preferredLanguages.first ?? "en"
    return first.split(separator: "-").first.map(String.init) ?? "en"
  }()

  static func localized(_ english: String) -> String {
    language == "de" ? german[english] ?? english : english
  }

  static func localized(_ english: String, _ name: String, _ value: String) -> String {
    localized(english).replacingOccurrences(of: "{" + name + "}", with: value)
  }

  private static let german = [
    "Measuring…": "Messung…",
    "As of {time}": "Stand {time}",
    "Nothing to fix": "Nichts zu beheben",
    "Top apps by memory": "Größte Apps nach Speicher",
    "Health {score} of 100": "Zustand {score} von 100",
    "Memory": "Speicher",
    "Disk": "Festplatte",
    "Network": "Netzwerk",
  ]
}
