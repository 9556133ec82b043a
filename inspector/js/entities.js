// The list labelled "Entities": one item per registered entity, by id. Choosing one
// shows its context stack; the suspended entity carries a mark.

import { choiceButton, fillChoice, makeChoiceList, syncList, updateChoiceStops } from './list.js';

export function mountEntities(store, actions) {
  const list = document.getElementById('entities');
  makeChoiceList(list);
  store.subscribe((state, previous) => {
    if (previous && ['entities', 'selectedEntity', 'suspended', 'suspendedEntity']
      .every((key) => previous[key] === state[key])) return;
    syncList(list, state.entities, (entity) => entity,
      () => choiceButton((key) => actions.selectEntity(Number(key))),
      (item, entity) => fillChoice(item, {
        index: '',
        text: `entity ${entity}`,
        current: entity === state.selectedEntity,
        badge: state.suspended && entity === state.suspendedEntity ? 'stopped' : null,
      }));
    updateChoiceStops(list);
  });
}
