#pragma once

// Regulatory flags: the application is directed at children (COPPA), the user is under the GDPR.
class TNLPrivacy {
 public:
  TNLPrivacy();
  TNLPrivacy(bool coppa, bool gdpr);

  bool coppa() const { return coppa_; }
  void setCoppa(bool value) { coppa_ = value; }
  bool gdpr() const { return gdpr_; }
  void setGdpr(bool value) { gdpr_ = value; }

 private:
  bool coppa_;
  bool gdpr_;
};
