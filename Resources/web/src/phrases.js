// French texts for CodeMirror's own panels and screen-reader announcements.
export const frenchPhrases = {
  // search panel
  Find: "Rechercher",
  Replace: "Remplacer",
  next: "suivant",
  previous: "précédent",
  all: "tout",
  "match case": "respecter la casse",
  "by word": "mot entier",
  regexp: "expression régulière",
  replace: "remplacer",
  "replace all": "tout remplacer",
  close: "fermer",
  "current match": "occurrence actuelle",
  "replaced $ matches": "$ occurrences remplacées",
  "replaced match on line $": "occurrence remplacée à la ligne $",
  "on line": "à la ligne",
  // go to line
  "Go to line": "Aller à la ligne",
  go: "aller",
  // special characters and folding
  "Control character": "Caractère de contrôle",
  "Folded lines": "Lignes repliées",
  "Unfolded lines": "Lignes dépliées",
  to: "jusqu'à",
  "folded code": "code replié",
  unfold: "déplier",
  "Fold line": "Replier la ligne",
  "Unfold line": "Déplier la ligne",
  // editor
  "Selection deleted": "Sélection supprimée",
};
