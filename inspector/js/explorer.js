// The resource explorer: any resource path of the API (such as sim/agents/2 or
// debug/entities/1/contexts), fetched on demand and shown as a tree.

import { TreeView } from './tree.js';

export function mountExplorer(api, actions) {
  const form = document.getElementById('explorer-form');
  const input = document.getElementById('resource-path');
  const host = document.getElementById('resource');
  const status = document.createElement('p');
  status.className = 'explorer-status';
  status.setAttribute('aria-live', 'polite');
  const treeHost = document.createElement('div');
  host.append(status, treeHost);
  const tree = new TreeView(treeHost, 'Resource values');
  status.hidden = true;

  form.addEventListener('submit', async (event) => {
    event.preventDefault();
    // "/api/sim", "api/sim" and "sim" name the same resource.
    const path = input.value.trim().replace(/^\/+/, '').replace(/^api(\/|$)/, '');
    status.hidden = false;
    status.textContent = `GET /api/${path} …`;
    try {
      const reply = await api.readResource(path);
      status.textContent = `GET /api/${path}: ${reply.status}`;
      tree.show(reply.value);
    } catch (error) {
      status.textContent = `GET /api/${path}: ${error.unreachable ? 'no answer' : `${error.status} ${error.reason}`}`;
      tree.show(undefined);
      if (error.unauthorized || error.unreachable) actions.refused('Fetching the resource', error);
    }
  });
}
