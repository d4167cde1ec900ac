// What the host found in the open folder about this document's links and pictures: the link
// targets that lead nowhere, and for each picture its file and size (null: no such file). The
// page cannot know either, having no view of the folder; until the host answers, links are drawn
// as links and pictures are looked for beside the document.
import { StateEffect, StateField } from "@codemirror/state";

export const setLinkFacts = StateEffect.define();

const NONE = { missing: new Set(), pictures: new Map() };

// Facts as the host sends them: { missing: [target, ...], pictures: { source: fact | null } }.
export function readFacts(facts) {
  return {
    missing: new Set(Array.isArray(facts?.missing) ? facts.missing : []),
    pictures: new Map(Object.entries(facts?.pictures ?? {})),
  };
}

// A new document starts with a new state, and so without the facts of the one before.
export const linkFacts = StateField.define({
  create: () => NONE,
  update(facts, tr) {
    for (const effect of tr.effects) if (effect.is(setLinkFacts)) facts = effect.value;
    return facts;
  },
});
