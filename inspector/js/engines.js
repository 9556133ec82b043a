// The engines as switches, one per engine, named by its path. Turning one on or off
// goes through the host's engine switch board; the switch shows what the host says.

import { syncList } from './list.js';

export function mountEngines(store, actions) {
  const group = document.getElementById('engines');
  const switches = document.createElement('span');
  switches.id = 'engine-switches';
  switches.className = 'engine-switches';
  group.append(switches);

  store.subscribe((state, previous) => {
    if (previous && previous.engines === state.engines) return;
    syncList(switches, state.engines, (engine) => engine.path, (engine) => {
      const label = document.createElement('label');
      label.className = 'switch';
      const input = document.createElement('input');
      input.type = 'checkbox';
      input.setAttribute('role', 'switch');
      input.addEventListener('change', async () => {
        await actions.switchEngine(engine.path, input.checked);
        // A refused switch goes back to what the host says.
        const known = store.get().engines.find((candidate) => candidate.path === engine.path);
        if (known) input.checked = known.enabled;
      });
      const track = document.createElement('span');
      track.className = 'track';
      track.setAttribute('aria-hidden', 'true');
      label.append(input, track, document.createTextNode(engine.path));
      label.title = `Turn the engine "${engine.path}" on or off for inspection`;
      return label;
    }, (label, engine) => {
      label.firstElementChild.checked = engine.enabled;
    });
  });
}
