// The package in a worker, for browsers.
import {connect} from './remote.js';

export {QuorError, Reason, Status} from './errors.js';

/** Starts a worker and loads the module in it. */
export async function startWorker({source, worker} = {}) {
  const make = worker ?? (() => new Worker(new URL('./worker_script.js', import.meta.url), {type: 'module'}));
  return connect((receive, fail) => {
    const started = make();
    started.onmessage = ({data}) => receive(data);
    started.onmessageerror = () => fail(new Error('a message could not be read'));
    started.onerror = (event) => {
      event.preventDefault?.();
      fail(new Error(event.message || 'its script cannot be loaded'));
    };
    return {post: (message, transfer) => started.postMessage(message, transfer), end: () => started.terminate()};
  }, source);
}
