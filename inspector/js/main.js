// The inspector page: wires the API client, the store, the poller and the views.

import { Actions } from './actions.js';
import { Api } from './api.js';
import { mountBreakpoints } from './breakpoints.js';
import { mountContexts } from './contexts.js';
import { mountControls } from './controls.js';
import { mountEngines } from './engines.js';
import { mountEntities } from './entities.js';
import { mountEvents } from './events.js';
import { mountExplorer } from './explorer.js';
import { mountHeader } from './header.js';
import { Poller } from './poller.js';
import { Refresher } from './refresh.js';
import { Store, createState } from './state.js';
import { currentToken, mountTokenPrompt } from './token.js';

const store = new Store(createState());
const api = new Api(currentToken);
const refresher = new Refresher(api, store);
const poller = new Poller(() => refresher.run(), onRefreshFailed);
const askToken = mountTokenPrompt(() => {
  store.update({ message: null });
  poller.refreshSoon();
});
const actions = new Actions(api, store, poller, askToken);

function onRefreshFailed(error) {
  if (error.unreachable) {
    // The host may come back as a new process: what was read of it is stale.
    if (store.get().connection !== 'disconnected') refresher.forgetEvents();
    store.update({ connection: 'disconnected' });
  } else if (error.unauthorized) {
    // Nothing can be read until the user gives the token.
    store.update({ connection: 'connecting' });
    askToken(currentToken() ? 'The host refused the access token: enter the right one.'
      : 'This host asks for an access token.');
  } else {
    store.update({ connection: 'connected' });
    actions.refused('Reading the host', error);
  }
}

mountHeader(store);
mountControls(store, actions);
mountEngines(store, actions);
mountEntities(store, actions);
mountContexts(store, actions);
mountBreakpoints(store, actions);
mountEvents(store, actions);
mountExplorer(api, actions);
poller.start();
