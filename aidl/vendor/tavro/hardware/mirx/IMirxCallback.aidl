package vendor.tavro.hardware.mirx;

import vendor.tavro.hardware.mirx.MirxRequestData;

/**
 * What a client hands to the service to hear back from it.
 */
@VintfStability
interface IMirxCallback {
    /** A request has completed, or watched resources or thermal levels have changed. */
    void onCallback(in MirxRequestData[] data);
}
