// The list labelled "Contexts": the chosen entity's context stack from top to bottom,
// each with its index and location; and the region labelled "Context details", which
// shows what the chosen context writes about itself as a tree.

import { choiceButton, fillChoice, makeChoiceList, showEmpty, syncList, updateChoiceStops } from './list.js';
import { TreeView } from './tree.js';

export function mountContexts(store, actions) {
  const list = document.getElementById('contexts');
  const entityTitle = document.getElementById('contexts-entity');
  const location = document.getElementById('details-location');
  const emptyHint = document.querySelector('[data-empty-for="contexts"]');
  const tree = new TreeView(document.getElementById('details-tree'), 'Context values');
  makeChoiceList(list);

  store.subscribe((state, previous) => {
    if (previous && ['contexts', 'selectedContext', 'selectedEntity', 'details']
      .every((key) => previous[key] === state[key])) return;
    entityTitle.textContent = state.selectedEntity === null ? '' : `entity ${state.selectedEntity}`;
    emptyHint.textContent = state.selectedEntity === null
      ? 'Select an entity to see its context stack, top first.'
      : `Entity ${state.selectedEntity} is in no context right now.`;
    const top = state.contexts.length > 0 ? state.contexts[0].index : null;
    syncList(list, state.contexts, (context) => context.index,
      () => choiceButton((key) => actions.selectContext(Number(key))),
      (item, context) => fillChoice(item, {
        index: String(context.index),
        text: context.location,
        current: context.index === state.selectedContext,
        badge: context.index === top ? 'top' : null,
      }));
    updateChoiceStops(list);

    const details = state.details;
    location.textContent = details ? details.location ?? '' : '';
    tree.show(details ? details.value : undefined);
    showEmpty('details', details === null);
  });
}
