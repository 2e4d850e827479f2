// The package in a worker, for Node.js.
import {Worker} from 'node:worker_threads';
import {connect} from './remote.js';

export {QuorError, Reason, Status} from './errors.js';

/** Starts a worker and loads the module in it. */
export async function startWorker({source, worker} = {}) {
  const make = worker ?? (() => new Worker(new URL('./worker_script_node.js', import.meta.url)));
  return connect((receive, fail) => {
    const started = make();
    started.on('message', receive);
    started.on('error', fail);
    return {post: (message, transfer) => started.postMessage(message, transfer), end: () => started.terminate()};
  }, source);
}
